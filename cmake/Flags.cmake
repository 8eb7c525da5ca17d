# What every target of the project is compiled and linked with, as the interface target vekcv_flags.
add_library(vekcv_flags INTERFACE)
target_compile_options(vekcv_flags INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:-Wall -Wextra -Wshadow -Wconversion>
    # False alarms of g++ 12 for the sum of two C++20 strings.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
    # Which -Wconversion includes in clang alone.
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-sign-conversion>
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<BOOL:${VEKCV_WARNINGS_AS_ERRORS}>>:-Werror>
    # The same bits in every build: no fused multiply-add where the source has none, no x87 arithmetic.
    $<$<COMPILE_LANGUAGE:C,CXX>:-ffp-contract=off>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(vekcv_flags INTERFACE $<$<COMPILE_LANGUAGE:C,CXX>:-msse2 -mfpmath=sse>)
endif()

# Sanitizers, in all targets, GoogleTest's too. Images may begin at any address, so alignment is no error.
if(VEKCV_SANITIZERS)
    add_compile_options(-O1 -g1 -fsanitize=${VEKCV_SANITIZERS} -fno-sanitize=alignment -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VEKCV_SANITIZERS})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Checks as calls: inlined ones take twice the time to compile. Warnings of values that are not set are false
        # alarms in instrumented code.
        add_compile_options(--param=asan-instrumentation-with-call-threshold=0 -Wno-maybe-uninitialized)
    endif()
endif()

# Additional link options of the shared libraries. What clang's sanitizers call is defined in programs only.
set(VEKCV_SHARED_LINK_OPTIONS -Wl,-z,text,-z,relro,-z,now)
if(NOT VEKCV_SANITIZERS)
    list(APPEND VEKCV_SHARED_LINK_OPTIONS -Wl,-z,defs)
endif()

# A shared library's version script: the given symbols, in a node named after the library, and nothing else.
function(vekcv_write_version_script path node symbols)
    list(TRANSFORM symbols REPLACE "(.+)" "        \\1@semicolon@\n" OUTPUT_VARIABLE lines)
    list(JOIN lines "" lines)
    set(semicolon ";")  # in the text itself it would separate list elements
    string(CONFIGURE "@node@ {\n    global:\n${lines}    local:\n        *@semicolon@\n}@semicolon@\n" script @ONLY)
    file(CONFIGURE OUTPUT ${path} CONTENT "@script@" @ONLY)
endfunction()

# Version and place of a library and, where it is a shared one, what it exports.
function(vekcv_finish_library target script)
    set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
        ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR} LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
    if(BUILD_SHARED_LIBS)
        target_link_options(${target} PRIVATE ${VEKCV_SHARED_LINK_OPTIONS} -Wl,--version-script=${script})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    endif()
endfunction()
