# The code variants: the sources of all operations are compiled once for each, in a namespace of its own.
set(VEKCV_VARIANTS v0 v1)
set(VEKCV_FLAGS_v0 -mssse3)
# The low-power line. Older tunings cost a third on other processors, which run this variant in 32 bits.
set(VEKCV_FLAGS_v1 -mssse3 -mmovbe -mtune=tremont)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    # Highway takes its AVX2 target only with these groups, which the kernels do not need, or with their absence declared.
    set(off -DHWY_DISABLE_BMI2_FMA -DHWY_DISABLE_F16C -DHWY_DISABLE_PCLMUL_AES)
    list(APPEND VEKCV_VARIANTS v2)
    set(VEKCV_FLAGS_v2 -mavx2 ${off})
    if(VEKCV_AVX512)
        list(APPEND VEKCV_VARIANTS v3)
        set(VEKCV_FLAGS_v3 -mavx512f -mavx512bw -mavx512dq -mavx512vl ${off})
    endif()
endif()
list(SUBLIST VEKCV_VARIANTS 0 ${VEKCV_MOST_VARIANTS} VEKCV_VARIANTS)
list(LENGTH VEKCV_VARIANTS VEKCV_VARIANT_COUNT)
list(TRANSFORM VEKCV_VARIANTS REPLACE "(.+)" "VEKCV_VARIANT_ITEM(\\1)\n" OUTPUT_VARIABLE items)
list(JOIN items "" items)
file(CONFIGURE OUTPUT ${VEKCV_GENERATED}/vekcv_variants.inc CONTENT "@items@" @ONLY)

# Adds files of the calling folder to those that every variant compiles. Each folder lists its own, ahead of frame/.
function(vekcv_sources)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(GLOBAL APPEND PROPERTY VEKCV_SOURCES ${ARGN})
endfunction()

# Sets the variable named by `result` to the objects of all variants, in their order: where an inline function of somebody
# else's header is not inlined, the linker takes the first copy, which runs on every processor.
function(vekcv_compile_variants result)
    get_property(sources GLOBAL PROPERTY VEKCV_SOURCES)
    set(objects "")
    set(index 0)
    foreach(variant IN LISTS VEKCV_VARIANTS)
        add_library(vekcv_${variant} OBJECT ${sources})
        target_compile_definitions(vekcv_${variant} PRIVATE
            VEKCV_VARIANT=${variant} VEKCV_VARIANT_INDEX=${index} HWY_COMPILE_ONLY_STATIC)
        target_compile_options(vekcv_${variant} PRIVATE ${VEKCV_FLAGS_${variant}})
        target_link_libraries(vekcv_${variant} PRIVATE vekcv_implementation)
        # Reading Highway is half of the time to compile a file. With that of AVX-512 g++ forgets, in a precompiled
        # header, which of its own warnings about the compiler's headers are switched off there.
        if(NOT variant STREQUAL v3)
            target_precompile_headers(vekcv_${variant} PRIVATE <hwy/highway.h>)
        endif()
        list(APPEND objects $<TARGET_OBJECTS:vekcv_${variant}>)
        math(EXPR index "${index} + 1")
    endforeach()
    set(${result} ${objects} PARENT_SCOPE)
endfunction()
