# cmake --install: the application folder of the build, lib/quarl, with links to its programs in bin; the SDK for authors
# of modules; documents and desktop entry. The console, the host of modules and the helpers find each other and the
# plug-in folders beside themselves, so the application folder can be anywhere as long as it stays whole.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(QUARL_INSTALL_APPDIR "lib/quarl" CACHE STRING "Application folder below the prefix")

set(QUARL_INSTALL_DOCDIR "${CMAKE_INSTALL_DATADIR}/doc/quarl")

set(programs)
foreach(target quarl-console quarld quarlctl quarl-modulehost quarl-echo TestHelper AlertHelper quarl-forms)
  if(TARGET ${target})
    list(APPEND programs ${target})
  endif()
endforeach()
install(
  TARGETS ${programs}
  RUNTIME DESTINATION "${QUARL_INSTALL_APPDIR}"
  LIBRARY DESTINATION "${QUARL_INSTALL_APPDIR}")

get_property(modules GLOBAL PROPERTY QUARL_BUNDLED_MODULES)
foreach(module IN LISTS modules)
  get_target_property(folder ${module} LIBRARY_OUTPUT_DIRECTORY)
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY "${QUARL_LAYOUT_DIR}")
  install(TARGETS ${module} LIBRARY DESTINATION "${QUARL_INSTALL_APPDIR}/${folder}")
endforeach()

# Links, because each program knows its folder by its own file.
foreach(program quarl-console quarld quarlctl)
  if(TARGET ${program})
    cmake_path(RELATIVE_PATH QUARL_INSTALL_APPDIR BASE_DIRECTORY "${CMAKE_INSTALL_BINDIR}" OUTPUT_VARIABLE target)
    install(
      CODE "file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
file(CREATE_LINK \"${target}/${program}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${program}\" SYMBOLIC)")
  endif()
endforeach()

if(TARGET quarl-console)
  install(FILES "${QUARL_LAYOUT_DIR}/DRAGMOVE.ico" DESTINATION "${QUARL_INSTALL_APPDIR}")
  install(FILES docs/user-guide.md DESTINATION "${QUARL_INSTALL_APPDIR}/docs")
  install(FILES resources/quarl-console.desktop DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
  install(FILES resources/icons/quarl.svg DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
endif()
install(
  DIRECTORY docs/
  DESTINATION "${QUARL_INSTALL_DOCDIR}"
  FILES_MATCHING PATTERN "*.md" PATTERN "images" EXCLUDE)

# The service as a unit of the service manager, and its user. The unit names folders of the installation, whose prefix may
# be given as late as "cmake --install --prefix".
set(unit_source "${CMAKE_CURRENT_SOURCE_DIR}/packaging/systemd/quarld.service.in")
set(unit "${CMAKE_CURRENT_BINARY_DIR}/systemd/quarld.service")
set(QUARL_APP_DIR "${CMAKE_INSTALL_PREFIX}/${QUARL_INSTALL_APPDIR}")
set(QUARL_DOC_DIR "${CMAKE_INSTALL_PREFIX}/${QUARL_INSTALL_DOCDIR}")
configure_file("${unit_source}" "${unit}" @ONLY)
install(
  CODE "set(QUARL_APP_DIR \"\${CMAKE_INSTALL_PREFIX}/${QUARL_INSTALL_APPDIR}\")
set(QUARL_DOC_DIR \"\${CMAKE_INSTALL_PREFIX}/${QUARL_INSTALL_DOCDIR}\")
configure_file(\"${unit_source}\" \"${unit}.installed\" @ONLY)")
install(FILES "${unit}.installed" DESTINATION lib/systemd/system RENAME quarld.service)
install(FILES packaging/systemd/quarl.sysusers DESTINATION lib/sysusers.d RENAME quarl.conf)

# The SDK: find_package(QuarlModule).
set(QUARL_SDK_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/QuarlModule")
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/QuarlModulePlaces.cmake.in" [[
@PACKAGE_INIT@
set(QUARL_MODULE_INCLUDE_DIR "@PACKAGE_QUARL_SDK_INCLUDE@")
set(QUARL_MODULE_RESCOMPILE "@PACKAGE_QUARL_SDK_RESCOMPILE@")
]])
set(QUARL_SDK_INCLUDE "${CMAKE_INSTALL_INCLUDEDIR}/quarl")
set(QUARL_SDK_RESCOMPILE "${CMAKE_INSTALL_BINDIR}/quarl-rescompile")
configure_package_config_file(
  "${CMAKE_CURRENT_BINARY_DIR}/QuarlModulePlaces.cmake.in" "${CMAKE_CURRENT_BINARY_DIR}/QuarlModulePlaces.cmake"
  INSTALL_DESTINATION "${QUARL_SDK_DIR}"
  PATH_VARS QUARL_SDK_INCLUDE QUARL_SDK_RESCOMPILE)
write_basic_package_version_file(
  "${CMAKE_CURRENT_BINARY_DIR}/QuarlModuleConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
  FILES cmake/QuarlModule.cmake cmake/QuarlModuleConfig.cmake "${CMAKE_CURRENT_BINARY_DIR}/QuarlModulePlaces.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/QuarlModuleConfigVersion.cmake"
  DESTINATION "${QUARL_SDK_DIR}")
install(FILES modules/sdk/quarl_module.h DESTINATION "${QUARL_SDK_INCLUDE}")
install(TARGETS quarl-rescompile RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY modules/sdk/example DESTINATION "${QUARL_INSTALL_DOCDIR}")
