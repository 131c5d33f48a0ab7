# pkg_config_flags(OUT --cflags|--libs): what the installed package's pkg-config file says, as a list.
function(pkg_config_flags out)
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    execute_process(COMMAND ${PKG_CONFIG} ${ARGN} KRCoreFileFormat
        OUTPUT_VARIABLE flags RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(result)
        message(FATAL_ERROR "pkg-config does not find the package")
    endif()
    separate_arguments(flags UNIX_COMMAND "${flags}")
    set(${out} "${flags}" PARENT_SCOPE)
endfunction()
