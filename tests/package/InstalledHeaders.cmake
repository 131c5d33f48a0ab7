# The installed headers are the public ones and the generated export headers, nothing else.
set(include ${PREFIX}/include/krcore)
file(GLOB_RECURSE installed RELATIVE ${include} ${include}/*)
list(FILTER installed EXCLUDE REGEX "/KRCore(Math|Mesh|Utility|FileFormat)Export\\.h$")
list(SORT installed)
list(SORT HEADERS)
if(NOT installed STREQUAL HEADERS)
    message(FATAL_ERROR "installed: ${installed}\npublic: ${HEADERS}")
endif()
