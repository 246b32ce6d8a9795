# The velmora tool's French catalogue: po/fr.po (translating po/velmora.pot, the English
# patterns of say() and toSay()) compiled by msgfmt into share/locale/fr/LC_MESSAGES of
# the build tree, where the tool finds it from its own folder, and installed likewise.
#   cmake --build --preset dev --target velmora-pot   refreshes velmora.pot and fr.po
find_program(MSGFMT msgfmt)
find_program(XGETTEXT xgettext)
find_program(MSGMERGE msgmerge)
if(NOT MSGFMT)
  message(STATUS "msgfmt missing (Debian package gettext): the velmora tool speaks English only")
  return()
endif()

set(velmora_mo ${PROJECT_BINARY_DIR}/share/locale/fr/LC_MESSAGES/velmora.mo)
add_custom_command(OUTPUT ${velmora_mo}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/share/locale/fr/LC_MESSAGES
  COMMAND ${MSGFMT} --check -o ${velmora_mo} ${PROJECT_SOURCE_DIR}/po/fr.po
  DEPENDS ${PROJECT_SOURCE_DIR}/po/fr.po
  VERBATIM)
add_custom_target(velmora-translations ALL DEPENDS ${velmora_mo})
if(TARGET velmora)
  add_dependencies(velmora velmora-translations)
endif()
install(FILES ${velmora_mo} DESTINATION ${CMAKE_INSTALL_LOCALEDIR}/fr/LC_MESSAGES COMPONENT tools)

# Every sentence said from these sources is a msgid; the template and the French file
# follow the sources through this target (never at build time: the sources stay as they are).
file(GLOB_RECURSE velmora_said_sources CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/apps/velmora/*.cpp ${PROJECT_SOURCE_DIR}/src/*.cpp ${PROJECT_SOURCE_DIR}/src/*.h)
set(VELMORA_XGETTEXT ${XGETTEXT} --language=C++ --from-code=UTF-8 --keyword= --keyword=say:1
  --keyword=toSay:1 --no-location --sort-output --package-name=velmora
  --package-version=${PROJECT_VERSION} --msgid-bugs-address=velmora@example.org)
if(XGETTEXT AND MSGMERGE)
  add_custom_target(velmora-pot
    COMMAND ${VELMORA_XGETTEXT} -o ${PROJECT_SOURCE_DIR}/po/velmora.pot ${velmora_said_sources}
    COMMAND ${MSGMERGE} --quiet --update --backup=none --no-location --sort-output
      ${PROJECT_SOURCE_DIR}/po/fr.po ${PROJECT_SOURCE_DIR}/po/velmora.pot
    VERBATIM)
endif()

# A sentence said in the sources without its French translation fails this test.
if(VELMORA_BUILD_TESTS AND XGETTEXT)
  find_program(MSGCMP msgcmp REQUIRED)
  string(REPLACE ";" " " xgettext_line "${VELMORA_XGETTEXT}")
  add_test(NAME catalogue_complete
    COMMAND sh -c "${xgettext_line} -o \"$0/velmora.pot\" \"$@\" && ${MSGCMP} ${PROJECT_SOURCE_DIR}/po/fr.po \"$0/velmora.pot\""
      ${PROJECT_BINARY_DIR} ${velmora_said_sources})
endif()
