# Debian packages: the library, its development files, the tools. "cpack" makes them of what is built.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/Finish.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/DropScripts.cmake)
set(CPACK_PACKAGE_VENDOR "KRCore developers")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL runtime development)
if(KRCORE_BUILD_APPS)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

# The name says which interface the library has: packages of two of them can be installed at once.
set(KRCORE_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkrcorefileformat${KRCORE_SOVERSION})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkrcorefileformat-dev)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME krmodel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)

# The first line is the summary. CPack puts the project's own in front of it, but not its usual words for none.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_NAME} built using CMake")
set(about "STL, OBJ, 3MF, STEP and IGES files are read into triangle meshes, and
pictures become reliefs; STL, OBJ and 3MF files are written.")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "3D model files as triangle meshes (libraries)
${about}

Programs that were built with libkrcorefileformat-dev load these libraries.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "3D model files as triangle meshes (development files)
${about}

The headers, and what CMake and pkg-config need to find the libraries.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "converter, checker and viewer of 3D model files
${about}

The program tells what a file holds and whether it can be printed, converts
it, and draws it without a display. Desktops show thumbnails of models with
it.")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
# Older than a first revision of Debian's own.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0krcore1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "KRCore developers <developers@krcore.invalid>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

# What the libraries are linked with is found in them, also for the one that is loaded for CAD files. The libraries of
# the build stand for those of the packages, which name one another below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
foreach(target IN ITEMS KRCoreMath KRCoreMesh KRCoreUtility KRCoreFileFormat)
    get_target_property(directory ${target} BINARY_DIR)
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${directory})
endforeach()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(KRCORE_DEBIAN_VERSION ${CPACK_DEBIAN_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(KRCORE_DEBIAN_RUNTIME "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${KRCORE_DEBIAN_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${KRCORE_DEBIAN_RUNTIME}, qtbase5-dev (>= ${KRCORE_QT_VERSION}), libeigen3-dev (>= ${KRCORE_EIGEN_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${KRCORE_DEBIAN_RUNTIME}")
# Qt reads TGA and TIFF with these alone.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS qt5-image-formats-plugins)

include(CPack)
