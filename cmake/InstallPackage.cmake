# The installed tree: headers, find_package(wmqstream), pkg-config. Every file finds the others relative to
# itself, so that the tree can be moved.
include(CMakePackageConfigHelpers)

set(headers_of_json PATTERN json.h EXCLUDE)
if(WMQ_BUILD_JSON)
  unset(headers_of_json)
endif()
install(
  DIRECTORY include/wmq
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING
  PATTERN "*.h" ${headers_of_json})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/wmqstream)
install(EXPORT wmqstream NAMESPACE wmqstream:: FILE wmqstream-targets.cmake DESTINATION ${package_dir})
configure_package_config_file(packaging/wmqstream-config.cmake.in wmqstream-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(wmqstream-config-version.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/wmqstream-config.cmake
        ${PROJECT_BINARY_DIR}/wmqstream-config-version.cmake
  DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
foreach(library wmqstream wmqjson)
  if(TARGET ${library}_static)
    configure_file(packaging/${library}.pc.in ${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${pkgconfig_dir})
  endif()
endforeach()

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
