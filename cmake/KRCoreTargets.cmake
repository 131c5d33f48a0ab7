# What all targets of the project share: compiler settings, and the shape of its libraries.

# Compiler settings of our own code; nothing of this reaches those who link the libraries.
add_library(krcore_settings INTERFACE)
target_compile_options(krcore_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
    -Wcast-align -Woverloaded-virtual)
if(KRCORE_WARNINGS_AS_ERRORS)
    target_compile_options(krcore_settings INTERFACE -Werror)
endif()
if(KRCORE_SANITIZE)
    target_compile_options(krcore_settings INTERFACE
        -fsanitize=${KRCORE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(krcore_settings INTERFACE -fsanitize=${KRCORE_SANITIZE})
endif()
target_compile_definitions(krcore_settings INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)
include(${CMAKE_CURRENT_LIST_DIR}/KRCoreHardening.cmake)

# krcore_library(<target> EXPORT_AS <name> HEADER_DIR <dir> SOURCES ... PUBLIC_HEADERS ... LINK_PUBLIC ... LINK_PRIVATE ...)
# One shared library of the project with its export header <HEADER_DIR>/<target>Export.h. The public headers are what
# is installed, under the same directory as in the source tree.
function(krcore_library target)
    cmake_parse_arguments(LIB "" "EXPORT_AS;HEADER_DIR;MACRO" "SOURCES;PUBLIC_HEADERS;LINK_PUBLIC;LINK_PRIVATE" ${ARGN})
    add_library(${target} SHARED ${LIB_SOURCES})
    add_library(KRCore::${LIB_EXPORT_AS} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${LIB_EXPORT_AS}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        INSTALL_RPATH $ORIGIN)
    generate_export_header(${target}
        EXPORT_MACRO_NAME ${LIB_MACRO}
        EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/generated/${LIB_HEADER_DIR}/${target}Export.h)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/generated>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/krcore>)
    target_link_libraries(${target} PUBLIC ${LIB_LINK_PUBLIC} PRIVATE $<BUILD_INTERFACE:krcore_settings> ${LIB_LINK_PRIVATE})
    target_compile_features(${target} PUBLIC cxx_std_17)

    install(TARGETS ${target} EXPORT KRCoreTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
        NAMELINK_COMPONENT development)
    foreach(header IN LISTS LIB_PUBLIC_HEADERS)
        get_filename_component(dir ${header} DIRECTORY)
        install(FILES ${PROJECT_SOURCE_DIR}/${header}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/krcore/${dir} COMPONENT development)
    endforeach()
    install(FILES ${PROJECT_BINARY_DIR}/generated/${LIB_HEADER_DIR}/${target}Export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/krcore/${LIB_HEADER_DIR} COMPONENT development)
    set_property(GLOBAL APPEND PROPERTY KRCORE_PUBLIC_HEADERS ${LIB_PUBLIC_HEADERS})
endfunction()
