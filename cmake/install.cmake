# What `cmake --install` puts in a prefix, and the Debian packages made of it:
#   runtime      the shared libraries                          (libvelmora<major.minor>)
#   development  headers, CMake package, link names, archives  (libvelmora-dev)
#   tools        velmora, velmora-demo and the sample account   (velmora)
# A host then writes find_package(Velmora 0.2 REQUIRED COMPONENTS Control Qt).
set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Velmora)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/velmora ${VELMORA_GENERATED_INCLUDE}/velmora
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# One export set per component, so that a host that asks for Store needs no Qt.
set(VELMORA_COMPONENTS Store Control)
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

install(TARGETS velmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
if(TARGET velmora-demo)
  install(TARGETS velmora-demo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/sample/
  DESTINATION ${CMAKE_INSTALL_DATADIR}/velmora/sample
  COMPONENT tools)

# Debian packages, one per component: cpack -G DEB in a release build.
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VENDOR "Velmora")
set(CPACK_PACKAGE_CONTACT "Velmora developers <velmora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Embeddable planning control for home-care planners")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
# Dependencies on system libraries are read from the binaries (dpkg-shlibdeps); those
# between our own packages are declared here, at this exact version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(velmora_runtime_package libvelmora${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${velmora_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Velmora shared libraries: the record store, the planning control and its Qt widgets")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelmora-dev)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Velmora development files: headers and the CMake package (find_package(Velmora))")
# The CMake package finds Qt 6 for Velmora::Qt; a static build also needs what the
# libraries link privately.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${velmora_runtime_package} (= ${PROJECT_VERSION}), qt6-base-dev")
if(NOT BUILD_SHARED_LIBS)
  string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", libsqlite3-dev, nlohmann-json3-dev")
endif()
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME velmora)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "Velmora tools: the velmora command line, velmora-demo and the sample account")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${velmora_runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
# The runtime package says which package provides its libraries (a shlibs file), and
# dpkg-shlibdeps finds them, for velmora-demo, where CPack stages that package.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/_CPack_Packages/${CMAKE_SYSTEM_NAME}/DEB/${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}/runtime/usr/${CMAKE_INSTALL_LIBDIR}")
include(CPack)
