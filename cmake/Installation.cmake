# What a program outside this tree finds the kit with: find_package(TarnavelleKit), or pkg-config tarnavellekit.
include(CMakePackageConfigHelpers)

set(config ${CMAKE_INSTALL_LIBDIR}/cmake/TarnavelleKit)
string(REGEX MATCH "^[0-9]+" OPENSSL_VERSION_MAJOR ${OPENSSL_VERSION})
configure_package_config_file(cmake/TarnavelleKitConfig.cmake.in TarnavelleKitConfig.cmake INSTALL_DESTINATION ${config})
write_basic_package_version_file(TarnavelleKitConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT TarnavelleKit FILE TarnavelleKitTargets.cmake NAMESPACE TarnavelleKit::
  DESTINATION ${config} COMPONENT kit)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TarnavelleKitConfig.cmake cmake/Findutf8proc.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/TarnavelleKitConfigVersion.cmake DESTINATION ${config} COMPONENT kit)

# A family calls only those declared before it, and a linker reads archives from the caller to the called.
get_property(familles GLOBAL PROPERTY TARNAVELLE_FAMILLES)
list(REVERSE familles)
list(TRANSFORM familles PREPEND -lTarnavelle OUTPUT_VARIABLE archives)
list(JOIN archives " " archives)
get_target_property(boost_url Boost::url LOCATION)
cmake_path(GET boost_url PARENT_PATH boost_dossier)
file(RELATIVE_PATH racine ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" racine ${racine})
configure_file(cmake/tarnavellekit.pc.in tarnavellekit.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarnavellekit.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT kit)

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tarnavelle)
