include(GenerateExportHeader)

# Warnings for the project's own targets only; consumers of the installed package inherit none.
function(vort_target_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wcast-qual -Wmissing-declarations)
    if(VORT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# vort_add_shared_library(<target> EXPORT_NAME <name> EXPORT_BASE <macro base>
#                         EXPORT_HEADER <path under include/> [SOURCES <files>...])
# A shared library of the package, alias Vort::<name>, with hidden symbols, a generated export
# header (<EXPORT_BASE>_EXPORT) and the project's include folders.
function(vort_add_shared_library target)
    cmake_parse_arguments(ARG "" "EXPORT_NAME;EXPORT_BASE;EXPORT_HEADER" "SOURCES" ${ARGN})
    add_library(${target} SHARED ${ARG_SOURCES})
    add_library(Vort::${ARG_EXPORT_NAME} ALIAS ${target})
    generate_export_header(${target}
        BASE_NAME ${ARG_EXPORT_BASE}
        EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/${ARG_EXPORT_HEADER})
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME ${ARG_EXPORT_NAME})
    vort_target_warnings(${target})
endfunction()
