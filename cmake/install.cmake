# What `cmake --install` puts in a prefix (debian/ splits it into packages):
#   the shared libraries            lib/<multiarch>/libvelmora_{store,control,qt,c}.so.0.2
#   headers, CMake package, .pc     include/velmora, lib/<multiarch>/{cmake/Velmora,pkgconfig}
#   the tools and the sample        bin/velmora, bin/velmora-demo, share/velmora/sample
#   manual pages, bash completion   share/man/man1, share/bash-completion/completions
# A host then writes find_package(Velmora 0.2 REQUIRED COMPONENTS Control Qt), or C alone,
# or asks pkg-config for velmora-store, velmora-control, velmora-qt or velmora-c.
set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Velmora)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/velmora ${VELMORA_GENERATED_INCLUDE}/velmora
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# One export set per component, so that a host that asks for Store or C needs no Qt.
set(VELMORA_COMPONENTS Store Control C)
if(TARGET velmora_qt)
  list(APPEND VELMORA_COMPONENTS Qt)
endif()
foreach(component IN LISTS VELMORA_COMPONENTS)
  string(TOLOWER ${component} lower)
  install(TARGETS velmora_${lower} EXPORT Velmora${component}Targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
      NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(EXPORT Velmora${component}Targets
    NAMESPACE Velmora::
    DESTINATION ${VELMORA_CMAKE_DIR}
    COMPONENT development)
endforeach()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VelmoraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VelmoraConfig.cmake
  INSTALL_DESTINATION ${VELMORA_CMAKE_DIR})
# 0.x: a minor version may change the interface, so only the same minor is compatible.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelmoraConfig.cmake ${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake
  DESTINATION ${VELMORA_CMAKE_DIR}
  COMPONENT development)

# pkg-config, one file per library, for hosts that do not use CMake. A static build
# names the private dependencies for `pkg-config --static`.
set(VELMORA_PC_store_REQUIRES "")
set(VELMORA_PC_store_PRIVATE "sqlite3 libpq")
set(VELMORA_PC_control_REQUIRES "velmora-store = ${PROJECT_VERSION}")
set(VELMORA_PC_control_PRIVATE "")
set(VELMORA_PC_qt_REQUIRES "velmora-control = ${PROJECT_VERSION}, Qt6Widgets")
set(VELMORA_PC_qt_PRIVATE "")
set(VELMORA_PC_c_REQUIRES "")
set(VELMORA_PC_c_PRIVATE "")
set(VELMORA_PC_store_SUMMARY "the record store of the Velmora planning control (C++20)")
set(VELMORA_PC_control_SUMMARY "the Velmora planning control and its dialog (C++20)")
set(VELMORA_PC_qt_SUMMARY "the Qt 6 widgets of the Velmora planning control (C++20)")
set(VELMORA_PC_c_SUMMARY "the Velmora planning control behind a plain C interface")
foreach(component IN LISTS VELMORA_COMPONENTS)
  string(TOLOWER ${component} lower)
  set(VELMORA_PC_NAME velmora-${lower})
  set(VELMORA_PC_LIBRARY velmora_${lower})
  set(VELMORA_PC_SUMMARY ${VELMORA_PC_${lower}_SUMMARY})
  set(VELMORA_PC_REQUIRES ${VELMORA_PC_${lower}_REQUIRES})
  set(VELMORA_PC_PRIVATE ${VELMORA_PC_${lower}_PRIVATE})
  if(BUILD_SHARED_LIBS OR lower STREQUAL "c")
    set(VELMORA_PC_PRIVATE "")
  endif()
  # The prefix is the one installed into, known only when installing.
  set(VELMORA_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/velmora.pc.in
    ${PROJECT_BINARY_DIR}/pkgconfig/velmora-${lower}.pc.in @ONLY)
  install(CODE "configure_file(${PROJECT_BINARY_DIR}/pkgconfig/velmora-${lower}.pc.in
    ${PROJECT_BINARY_DIR}/pkgconfig/velmora-${lower}.pc @ONLY)" COMPONENT development)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/velmora-${lower}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
endforeach()

install(TARGETS velmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
if(TARGET velmora-demo)
  install(TARGETS velmora-demo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
# The sample's README is documentation, not data (the packages put it in /usr/share/doc).
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/sample/
  DESTINATION ${CMAKE_INSTALL_DATADIR}/velmora/sample
  COMPONENT tools
  PATTERN README.md EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/data/bash-completion/velmora
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  COMPONENT tools)
include(${PROJECT_SOURCE_DIR}/cmake/manpages.cmake)

# Installed under /usr, where the libraries are on the loader's path, the binaries carry
# no RUNPATH (Debian's rule); anywhere else they find the libraries from where they are
# ($ORIGIN, set in CMakeLists.txt). The choice is made when installing, so that one build
# serves both the packages (dh_auto_install, prefix /usr) and a prefix install.
set(velmora_rpath_files
  "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:velmora>"
  "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:velmora_c>")
foreach(target IN ITEMS velmora_store velmora_control velmora_qt velmora-demo velmora_designer)
  if(NOT TARGET ${target})
    continue()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    list(APPEND velmora_rpath_files "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:${target}>")
  elseif(type STREQUAL "SHARED_LIBRARY")
    list(APPEND velmora_rpath_files "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:${target}>")
  elseif(type STREQUAL "MODULE_LIBRARY")
    list(APPEND velmora_rpath_files "${QT6_INSTALL_PLUGINS}/designer/$<TARGET_FILE_NAME:${target}>")
  endif()
endforeach()
install(CODE "
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    foreach(file IN ITEMS ${velmora_rpath_files})
      if(EXISTS \"\$ENV{DESTDIR}/usr/\${file}\")
        file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}/usr/\${file}\")
      endif()
    endforeach()
  endif()")
