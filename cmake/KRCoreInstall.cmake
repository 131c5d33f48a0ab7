# The installed package: found with find_package(KRCoreFileFormat), linked with KRCore::FileFormat alone; or found with
# pkg-config. Both files are relative to where they lie, so the installed tree may be moved.
include(CMakePackageConfigHelpers)

set(KRCORE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KRCoreFileFormat)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KRCoreFileFormatConfig.cmake.in
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfig.cmake
    INSTALL_DESTINATION ${KRCORE_PACKAGE_DIR}
    NO_SET_AND_CHECK_MACRO)
# Before 1.0 a minor version may change the interface, as the soname says too.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KRCoreFileFormatConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfig.cmake
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfigVersion.cmake
    DESTINATION ${KRCORE_PACKAGE_DIR} COMPONENT development)
install(EXPORT KRCoreTargets NAMESPACE KRCore:: DESTINATION ${KRCORE_PACKAGE_DIR} COMPONENT development)

set(KRCORE_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH KRCORE_PC_PREFIX /prefix/${KRCORE_PC_DIR} /prefix)
string(REGEX REPLACE "/$" "" KRCORE_PC_PREFIX "${KRCORE_PC_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/KRCoreFileFormat.pc.in ${PROJECT_BINARY_DIR}/KRCoreFileFormat.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KRCoreFileFormat.pc DESTINATION ${KRCORE_PC_DIR} COMPONENT development)
