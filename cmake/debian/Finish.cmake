# Run by CPack between the installation into directories of its own and the packing: what Debian asks for and an
# installation by hand does without.
cmake_policy(VERSION 3.21)

# compress(<file>): in its place, to the same bytes each time.
function(compress file)
    execute_process(COMMAND gzip --best --no-name --force ${file} RESULT_VARIABLE result)
    if(result)
        message(FATAL_ERROR "cannot compress ${file}")
    endif()
endfunction()

# document(<source> <target>): not file(INSTALL), which would go below DESTDIR.
function(document source target)
    file(COPY_FILE ${source} ${target})
    file(CHMOD ${target} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} name)
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)

    # The libraries lie where every program looks for them.
    file(GLOB_RECURSE binaries ${root}/lib/*.so.${CPACK_PACKAGE_VERSION} ${root}/bin/*)
    foreach(binary IN LISTS binaries)
        file(RPATH_REMOVE FILE ${binary})
    endforeach()

    set(documents ${root}/share/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
    file(MAKE_DIRECTORY ${documents})
    document(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright)
    if(component STREQUAL tools)
        # The headers that are compiled into the program ask for this notice.
        file(READ /usr/share/doc/libcli11-dev/copyright notice)
        file(APPEND ${documents}/copyright "\nThe program contains CLI11, of which Debian says:\n\n${notice}")
    endif()
    set(overrides ${CMAKE_CURRENT_LIST_DIR}/${component}.lintian-overrides)
    if(EXISTS ${overrides})
        file(MAKE_DIRECTORY ${root}/share/lintian/overrides)
        document(${overrides} ${root}/share/lintian/overrides/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
    endif()
    document(${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog.Debian)
    document(${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md ${documents}/changelog)
    file(GLOB pages ${root}/share/man/man?/*)
    foreach(text IN LISTS pages ITEMS ${documents}/changelog.Debian ${documents}/changelog)
        compress(${text})
    endforeach()
endforeach()
