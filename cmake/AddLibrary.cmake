# wmq_add_library(NAME SOURCE_DIRS dir... [INCLUDE dir...] [LINK library...])
#
# Makes NAME_static and, unless switched off, NAME (shared) from objects that are compiled once. INCLUDE are
# directories of foreign headers, LINK are libraries made by this function.
function(wmq_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCE_DIRS;INCLUDE;LINK")

  list(TRANSFORM arg_SOURCE_DIRS APPEND "/*.cpp" OUTPUT_VARIABLE patterns)
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})
  add_library(${name}_objects OBJECT ${sources})
  target_include_directories(${name}_objects PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_include_directories(${name}_objects SYSTEM PRIVATE ${arg_INCLUDE})
  target_link_libraries(${name}_objects PRIVATE $<BUILD_INTERFACE:wmq_options>)
  set_target_properties(
    ${name}_objects
    PROPERTIES POSITION_INDEPENDENT_CODE ON
               C_VISIBILITY_PRESET hidden
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)

  set(libraries ${name}_static)
  add_library(${name}_static STATIC $<TARGET_OBJECTS:${name}_objects>)
  set_target_properties(${name}_static PROPERTIES OUTPUT_NAME ${name})
  list(TRANSFORM arg_LINK APPEND "_static" OUTPUT_VARIABLE static_links)
  target_link_libraries(${name}_static PUBLIC ${static_links})

  if(WMQ_BUILD_SHARED)
    list(APPEND libraries ${name})
    add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    target_link_libraries(${name} PUBLIC ${arg_LINK})
    # The standard library's templates are visible whatever the compiler was told; the map hides them.
    set(map ${PROJECT_SOURCE_DIR}/packaging/exports.map)
    target_link_options(${name} PRIVATE -Wl,--no-undefined -Wl,--version-script=${map})
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()

  foreach(library IN LISTS libraries)
    add_library(wmqstream::${library} ALIAS ${library})
    target_include_directories(
      ${library} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    # An object library's language does not carry over to a library that is made of its objects alone.
    set_target_properties(${library} PROPERTIES LINKER_LANGUAGE CXX)
    install(TARGETS ${library} EXPORT wmqstream)
  endforeach()
endfunction()
