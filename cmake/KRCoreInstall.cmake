# The installed package: found with find_package(KRCoreFileFormat), linked with KRCore::FileFormat alone.
include(CMakePackageConfigHelpers)

set(KRCORE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KRCoreFileFormat)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KRCoreFileFormatConfig.cmake.in
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfig.cmake
    INSTALL_DESTINATION ${KRCORE_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KRCoreFileFormatConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfig.cmake
    ${PROJECT_BINARY_DIR}/KRCoreFileFormatConfigVersion.cmake
    DESTINATION ${KRCORE_PACKAGE_DIR} COMPONENT development)
install(EXPORT KRCoreTargets NAMESPACE KRCore:: DESTINATION ${KRCORE_PACKAGE_DIR} COMPONENT development)
