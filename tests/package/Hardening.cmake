# What is installed was compiled and linked as cmake/KRCoreHardening.cmake says: the linked files tell of it.
file(GLOB files ${PREFIX}/${LIBDIR}/libKRCore*.so.?.?.?)
list(LENGTH files count)
if(NOT count EQUAL 5)
    message(FATAL_ERROR "expected five libraries: ${files}")
endif()
if(PROGRAM)
    list(APPEND files ${PREFIX}/${PROGRAM})
endif()

# expect(<what>): of the file at hand, when what it tells of itself has just been matched.
macro(expect what)
    if(NOT CMAKE_MATCH_COUNT)
        message(SEND_ERROR "${file}: ${what}")
    endif()
endmacro()

set(checked_functions "")
foreach(file IN LISTS files)
    execute_process(COMMAND ${READELF} --wide --file-header --segments --dynamic --dyn-syms ${file}
        OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)

    # Programs too lie wherever the loader likes; what it has written there, it makes read-only before the program starts.
    string(REGEX MATCH "\n  Type: +(DYN) " _ "${told}")
    expect("has a fixed address")
    string(REGEX MATCH "\n  (GNU_RELRO) " _ "${told}")
    expect("keeps the loader's tables writable")
    string(REGEX MATCH "\\(FLAGS_1\\) +Flags:[^\n]* (NOW)" _ "${told}")
    expect("leaves functions to be resolved later")
    string(REGEX MATCH "\n  (GNU_STACK) [^\n]* RW  " _ "${told}")
    expect("has an executable stack")
    if(file MATCHES "/bin/")
        string(REGEX MATCH "\\(FLAGS_1\\) +Flags:[^\n]* (PIE)" _ "${told}")
        expect("is no position-independent program")
    endif()

    # Moved together, the files find one another; they look nowhere else.
    if(told MATCHES "\\((RPATH|RUNPATH)\\)[^\n]*\\[([^\n]*)\\]")
        set(directories ${CMAKE_MATCH_2})
        if(NOT directories MATCHES "^\\$ORIGIN(/\\.\\./[^:]+)?$")
            message(SEND_ERROR "${file}: libraries are looked for in ${directories}")
        endif()
    endif()

    # Whether vectors and matrices have an array on the stack is the compiler's affair.
    if(NOT file MATCHES "/libKRCoreMath\\.")
        string(REGEX MATCH " (__stack_chk_fail)[@\n]" _ "${told}")
        expect("does not look after its stack")
    endif()
    string(REGEX MATCHALL " UND __[a-z]+_chk[@\n]" functions "${told}")
    list(APPEND checked_functions ${functions})
endforeach()
if(OPTIMISED AND NOT checked_functions)
    message(SEND_ERROR "nothing calls the checked functions of the C library")
endif()
