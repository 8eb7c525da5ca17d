# What every target of the project is compiled and linked with, as the interface target vekcv_flags.
add_library(vekcv_flags INTERFACE)
target_compile_options(vekcv_flags INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:-Wall -Wextra -Wshadow -Wconversion>
    # False alarms of g++ 12 for the sum of two C++20 strings.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<BOOL:${VEKCV_WARNINGS_AS_ERRORS}>>:-Werror>
    # The same bits in every build: no fused multiply-add where the source has none, no x87 arithmetic.
    $<$<COMPILE_LANGUAGE:C,CXX>:-ffp-contract=off>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(vekcv_flags INTERFACE $<$<COMPILE_LANGUAGE:C,CXX>:-msse2 -mfpmath=sse>)
endif()

# Additional link options of the shared libraries.
set(VEKCV_SHARED_LINK_OPTIONS -Wl,-z,text,-z,defs,-z,relro,-z,now)

# A shared library's version script: the given symbols, in a node named after the library, and nothing else.
function(vekcv_write_version_script path node symbols)
    list(TRANSFORM symbols REPLACE "(.+)" "        \\1@semicolon@\n" OUTPUT_VARIABLE lines)
    list(JOIN lines "" lines)
    set(semicolon ";")  # in the text itself it would separate list elements
    string(CONFIGURE "@node@ {\n    global:\n${lines}    local:\n        *@semicolon@\n}@semicolon@\n" script @ONLY)
    file(CONFIGURE OUTPUT ${path} CONTENT "@script@" @ONLY)
endfunction()
