# Makes the manual in BUILD/html; fails at a warning.
file(REMOVE_RECURSE ${BUILD}/html)
execute_process(COMMAND ${DOXYGEN} ${BUILD}/Doxyfile WORKING_DIRECTORY ${SOURCE} RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "the manual has warnings")
endif()
# Pages lead to these, too.
file(COPY ${SOURCE}/examples ${SOURCE}/docs/check-many.sbatch DESTINATION ${BUILD}/html)
