# Compiles one installed header by itself, twice in a row, with the flags of the package's pkg-config file; what it
# includes must not come from a library that consumers need not have.
include(${CMAKE_CURRENT_LIST_DIR}/PkgConfig.cmake)
pkg_config_flags(flags --cflags)
# Directories of Qt and Eigen hold code that our warnings are not meant for.
string(REGEX REPLACE "-I([^;]*(qt5|eigen3)[^;]*)" "-isystem;\\1" flags "${flags}")

string(MAKE_C_IDENTIFIER ${HEADER} name)
set(source ${WORK}/${name}.cpp)
set(dependencies ${WORK}/${name}.d)
file(WRITE ${source} "#include \"${HEADER}\"\n#include \"${HEADER}\"\n")
execute_process(
    COMMAND ${COMPILER} -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wold-style-cast -Werror ${flags}
        -MD -MF ${dependencies} -c ${source} -o ${WORK}/${name}.o
    RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "${HEADER} does not compile by itself")
endif()

file(READ ${dependencies} included)
if(NOT included MATCHES "/include/krcore/${HEADER}")
    message(FATAL_ERROR "${HEADER} was not taken from the installation")
endif()
if(included MATCHES "[^ ]*(opencascade|quazip|libdeflate|/tbb/|/oneapi/|/boost/|_p\\.h)[^ ]*")
    message(FATAL_ERROR "${HEADER} reaches ${CMAKE_MATCH_0}")
endif()
