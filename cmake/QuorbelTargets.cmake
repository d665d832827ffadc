# What every target of the project has in common, and the one way to declare a library or a test.

add_library(quorbel_flags INTERFACE)
target_compile_features(quorbel_flags INTERFACE cxx_std_20)
target_compile_options(quorbel_flags INTERFACE
    -Wall -Wextra -Wpedantic $<$<BOOL:${QUORBEL_WERROR}>:-Werror>
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual)
# GCC 12 sees overlapping copies in inlined std::string operations where there are none (GCC bug
# 105651).
target_compile_options(quorbel_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# GCC has no such check: platform/ThreadAnnotations.h.
target_compile_options(quorbel_flags INTERFACE
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wthread-safety-beta>)
if(QUORBEL_SANITIZE)
    target_compile_options(quorbel_flags INTERFACE
        -fsanitize=${QUORBEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # An eighth of the time went into collecting the compiler's garbage.
    target_compile_options(quorbel_flags INTERFACE
        "$<$<CXX_COMPILER_ID:GNU>:SHELL:--param ggc-min-heapsize=1000000>")
    # This check reads memory through a pipe of its own, and takes every object for a wrong one while
    # a test leaves no descriptor for that.
    target_compile_options(quorbel_flags INTERFACE -fno-sanitize=vptr)
    target_link_options(quorbel_flags INTERFACE -fsanitize=${QUORBEL_SANITIZE})
endif()

# As some libraries want it; everywhere, so that headers can be read once for all.
target_compile_options(quorbel_flags INTERFACE -pthread)

add_library(quorbel_qt_flags INTERFACE)
target_link_libraries(quorbel_qt_flags INTERFACE quorbel_flags Qt6::Widgets)
target_compile_definitions(quorbel_qt_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_KEYWORDS
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)

# QUORBEL_VERSION, for what says it: one define of all sources would compile all of them anew.
add_library(quorbel_version INTERFACE)
target_compile_definitions(quorbel_version INTERFACE QUORBEL_VERSION="${PROJECT_VERSION}")

# quorbel_headers(NAME SOURCE...)
#
# Lets NAME, and what links it, include the headers that stand beside its sources, as "folder/File.h".
# They are found through links in a folder of the library's own, so that nothing else of src is within
# reach: an include that the layers forbid does not compile.
function(quorbel_headers name)
    set(links "${PROJECT_BINARY_DIR}/include/${name}")
    file(REMOVE_RECURSE "${links}")
    list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    list(TRANSFORM ARGN REPLACE "/[^/]*$" "")
    list(REMOVE_DUPLICATES ARGN)
    foreach(folder IN LISTS ARGN)
        file(RELATIVE_PATH place "${PROJECT_SOURCE_DIR}/src" "${folder}")
        file(MAKE_DIRECTORY "${links}/${place}")
        file(GLOB headers CONFIGURE_DEPENDS "${folder}/*.h")
        foreach(header IN LISTS headers)
            get_filename_component(file "${header}" NAME)
            file(CREATE_LINK "${header}" "${links}/${place}/${file}" SYMBOLIC)
        endforeach()
    endforeach()
    target_include_directories(${name} PUBLIC "${links}")
    set_property(GLOBAL APPEND PROPERTY QUORBEL_LIBRARIES ${name})
endfunction()

# quorbel_precompiled(NAME SHARED HEADER FLAGS [OPTIONS ...])
#
# With QUORBEL_PRECOMPILE, lets NAME take HEADER as it was read once for all that give the same SHARED;
# these are compiled with the same options, and link FLAGS. It spares no include: without it, which is
# how users and most of CI build, a source that lacks one does not compile.
function(quorbel_precompiled name shared header flags)
    cmake_parse_arguments(arg "" "" "OPTIONS" ${ARGN})
    if(NOT QUORBEL_PRECOMPILE)
        return()
    endif()
    if(NOT TARGET ${shared})
        set(source "${PROJECT_BINARY_DIR}/${shared}.cpp")
        file(CONFIGURE OUTPUT "${source}" CONTENT "")
        add_library(${shared} STATIC "${source}")
        target_link_libraries(${shared} PRIVATE ${flags})
        target_compile_options(${shared} PRIVATE ${arg_OPTIONS})
        target_precompile_headers(${shared} PRIVATE ${header})
        set_target_properties(${shared} PROPERTIES AUTOMOC OFF)
    endif()
    target_precompile_headers(${name} REUSE_FROM ${shared})
endfunction()

# quorbel_library(NAME [QT] SOURCES ... [UI ...] [LINK ...])
#
# A static library for one folder. UI names forms in src/layout; their generated headers are public,
# so that a header which includes one compiles in the targets that link this library.
function(quorbel_library name)
    cmake_parse_arguments(arg "QT" "" "SOURCES;UI;LINK" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    if(arg_QT)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PUBLIC quorbel_qt_flags)
        quorbel_precompiled(${name} library_headers <QtWidgets> quorbel_qt_flags)
    else()
        set_target_properties(${name} PROPERTIES AUTOMOC OFF)
        target_link_libraries(${name} PUBLIC quorbel_flags)
    endif()
    if(arg_UI)
        list(TRANSFORM arg_UI PREPEND "${PROJECT_SOURCE_DIR}/src/layout/")
        qt_wrap_ui(forms ${arg_UI})
        target_sources(${name} PRIVATE ${forms})
        target_include_directories(${name} SYSTEM PUBLIC "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    quorbel_headers(${name} ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC ${arg_LINK})
endfunction()
