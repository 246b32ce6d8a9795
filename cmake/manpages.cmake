# Manual pages velmora(1) and velmora-demo(1), made by help2man from the programs' own
# --help (velmora's commands from `velmora COMMAND --help`, cmake/velmora-commands.cmake)
# and the sections that --help does not hold (docs/man/*.h2m): the help stays the one text.
# They need the programs to run on the build machine: not in a sanitizer build.
find_program(HELP2MAN help2man)
if(NOT HELP2MAN OR VELMORA_SANITIZE)
  message(STATUS "No manual pages in this build (help2man missing, or a sanitizer build)")
  return()
endif()

set(man_dir ${PROJECT_BINARY_DIR}/man)
set(man_pages ${man_dir}/velmora.1)
add_custom_command(OUTPUT ${man_dir}/velmora-commands.h2m
  COMMAND ${CMAKE_COMMAND} -DVELMORA=$<TARGET_FILE:velmora>
    -DOUTPUT=${man_dir}/velmora-commands.h2m -P ${PROJECT_SOURCE_DIR}/cmake/velmora-commands.cmake
  DEPENDS velmora ${PROJECT_SOURCE_DIR}/cmake/velmora-commands.cmake
  VERBATIM)
# Run by name from its folder, so that the page names the program, not the build's path;
# in the C locale, so that the page is made from the English help whoever builds it.
add_custom_command(OUTPUT ${man_dir}/velmora.1
  COMMAND ${CMAKE_COMMAND} -E env "PATH=$<TARGET_FILE_DIR:velmora>:$ENV{PATH}" LC_ALL=C.UTF-8
    LANGUAGE=
    ${HELP2MAN} --no-info --section=1
      "--name=build, fill, read and query a Velmora store; run the planning control"
      --include=${PROJECT_SOURCE_DIR}/docs/man/velmora.h2m
      --include=${man_dir}/velmora-commands.h2m
      --output=${man_dir}/velmora.1 velmora
  DEPENDS velmora ${man_dir}/velmora-commands.h2m ${PROJECT_SOURCE_DIR}/docs/man/velmora.h2m
  VERBATIM)
if(TARGET velmora-demo)
  list(APPEND man_pages ${man_dir}/velmora-demo.1)
  add_custom_command(OUTPUT ${man_dir}/velmora-demo.1
    COMMAND ${CMAKE_COMMAND} -E env "PATH=$<TARGET_FILE_DIR:velmora-demo>:$ENV{PATH}"
      LC_ALL=C.UTF-8 LANGUAGE=
      ${HELP2MAN} --no-info --section=1 --version-string=${PROJECT_VERSION}
        "--name=a small host of the Velmora planning control, on screen"
        --include=${PROJECT_SOURCE_DIR}/docs/man/velmora-demo.h2m
        --output=${man_dir}/velmora-demo.1 velmora-demo
    DEPENDS velmora-demo ${PROJECT_SOURCE_DIR}/docs/man/velmora-demo.h2m
    VERBATIM)
endif()
add_custom_target(manpages ALL DEPENDS ${man_pages})
install(FILES ${man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
