# Installs BUILD into an empty PREFIX.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} OUTPUT_QUIET RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "the installation failed")
endif()
