# Run by CPack when the packages are made. It writes scripts that call ldconfig for every package with a library; the
# trigger does that, once for all packages that are installed together.
cmake_policy(VERSION 3.21)

foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(NOT package MATCHES "/${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}_[^/]*$")
        continue()
    endif()
    set(root ${CPACK_TEMPORARY_DIRECTORY}/packed)
    file(REMOVE_RECURSE ${root})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${root} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${root}/DEBIAN/postinst ${root}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${root} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
