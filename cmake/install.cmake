# Install layout and the Debian package. The dialog host finds the bundle at
# <prefix>/lib/talmo/TalmoFeatures.plugin beside <prefix>/bin, and shipped defaults in
# <prefix>/share/talmo/.
include(GNUInstallDirs)
set(TALMO_BUNDLE_INSTALL_DIR lib/talmo/TalmoFeatures.plugin)

install(TARGETS talmo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ${TALMO_CLI_PROGRAMS} RUNTIME DESTINATION ${TALMO_CLI_LIBEXEC_INSTALL_DIR})
if(TARGET talmo-print)
  install(TARGETS talmo-print RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/host/talmo-print.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${PROJECT_SOURCE_DIR}/host/talmo-print.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
endif()
install(TARGETS TalmoFeatures LIBRARY DESTINATION ${TALMO_BUNDLE_INSTALL_DIR})
install(DIRECTORY ${PROJECT_BINARY_DIR}/plugin/TalmoFeatures.plugin/ DESTINATION ${TALMO_BUNDLE_INSTALL_DIR}
        PATTERN "*.so" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/talmo/examples)
if(EXISTS ${PROJECT_SOURCE_DIR}/resources/TalmoFeatures.plist)
  install(FILES ${PROJECT_SOURCE_DIR}/resources/TalmoFeatures.plist DESTINATION ${CMAKE_INSTALL_DATADIR}/talmo)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME talmo)
set(CPACK_PACKAGE_VENDOR "Talmo")
set(CPACK_PACKAGE_CONTACT "Talmo print software <print-software@talmo.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Print dialog extension and tools for Talmo production presses")
set(CPACK_PACKAGE_DESCRIPTION "talmo-print prints PDF documents through CUPS with the Talmo print dialog extension:\n papers, covers and inserts, finishing, image options, job notes, watermarks and the TPIF job\n ticket. talmo works on the same settings from the command line.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beyond the libraries: Qt finds its display plug-ins in qt6-qpa-plugins' packages through
# libqt6gui6, which shlibdeps names; the demo printer and the paper list need these programs.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "cups-ipp-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "avahi-daemon, dbus, cups-client, poppler-utils")
include(CPack)
