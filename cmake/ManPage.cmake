# wmq.1, from what the program says about itself.

find_program(HELP2MAN help2man)
if(NOT HELP2MAN)
  message(STATUS "help2man not found: no man page of wmq")
  return()
endif()

set(man_page ${PROJECT_BINARY_DIR}/wmq.1)
add_custom_command(
  OUTPUT ${man_page}
  COMMAND ${PROJECT_SOURCE_DIR}/packaging/make-man $<TARGET_FILE:wmq> ${man_page}
  DEPENDS wmq packaging/make-man
  COMMENT "Making the man page wmq.1"
  VERBATIM)
add_custom_target(man ALL DEPENDS ${man_page})
install(FILES ${man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
