# What makes a fault in our code hard to use: a write beyond an array ends the program, no address is known beforehand,
# and what the loader has resolved stays as it is. Who packages the libraries with flags of another choice switches
# KRCORE_HARDENING off. Sanitizers see more, but not what goes by the checked functions of the C library.
if(NOT KRCORE_HARDENING OR KRCORE_SANITIZE)
    return()
endif()

# Compilers know these for some processors only.
include(CheckCXXCompilerFlag)
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "KRCORE_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        target_compile_options(krcore_settings INTERFACE ${flag})
    endif()
endforeach()

# The checked functions take what the optimiser has found out, and warn without it. Some compilers come with a level set.
set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
target_compile_options(krcore_settings INTERFACE
    $<${optimised}:-U_FORTIFY_SOURCE>
    $<${optimised}:-D_FORTIFY_SOURCE=2>)

include(CheckLinkerFlag)
foreach(keyword IN ITEMS relro now noexecstack)
    check_linker_flag(CXX -Wl,-z,${keyword} KRCORE_HAS_z_${keyword})
    if(KRCORE_HAS_z_${keyword})
        target_link_options(krcore_settings INTERFACE -Wl,-z,${keyword})
    endif()
endforeach()

# With this, position-independent code makes position-independent programs.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
