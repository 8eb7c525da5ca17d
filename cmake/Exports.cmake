# Reads the list of exports from the public header and writes what is made from it, into generated/ of the build folder:
#   vekcv_exports.inc        VEKCV_EXPORT(name) for each export
#   vekcv_parameters.inc     VEKCV_EXPORT(name, "source sourceStep roiSize"), with the names of its parameters
#   vekcv_descriptions.inc   VEKCV_EXPORT(name, "description"), where the description is the one-line comment above the
#                            run of declarations that the export belongs to
#   vekcv.version, vekcv.def what the linkers export
set(VEKCV_HEADER ${CMAKE_SOURCE_DIR}/include/vekcv.h)
set(VEKCV_GENERATED ${CMAKE_BINARY_DIR}/generated)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${VEKCV_HEADER})

file(STRINGS ${VEKCV_HEADER} lines REGEX "^(VEKCV_API |/\\*\\* .* \\*/$|/\\*\\*$)")
set(VEKCV_EXPORTS "")
set(descriptions "")
set(description "")
foreach(line IN LISTS lines)
    if(line MATCHES "^VEKCV_API .*(veki|vekcv)([A-Za-z0-9_]+)\\(")
        set(name ${CMAKE_MATCH_1}${CMAKE_MATCH_2})
        if(description STREQUAL "")
            message(FATAL_ERROR "vekcv.h: ${name} has no description")
        endif()
        list(APPEND VEKCV_EXPORTS ${name})
        string(APPEND descriptions "VEKCV_EXPORT(${name}, \"${description}\")\n")
    elseif(line MATCHES "^/\\*\\* ([^@].*) \\*/$")
        set(description "${CMAKE_MATCH_1}")
    else()
        set(description "")
    endif()
endforeach()

list(LENGTH VEKCV_EXPORTS count)
message(STATUS "vekcv.h declares ${count} exports")
list(TRANSFORM VEKCV_EXPORTS REPLACE "(.+)" "VEKCV_EXPORT(\\1)\n" OUTPUT_VARIABLE exports)
list(JOIN exports "" exports)
list(JOIN VEKCV_EXPORTS "\n    " definitions)

file(READ ${VEKCV_HEADER} header)
string(REPLACE ";" "@" header "${header}")  # which would separate list elements
string(REGEX MATCHALL "\nVEKCV_API [^@]*@" declarations "${header}")
set(parameters "")
foreach(declaration IN LISTS declarations)
    string(REGEX MATCH "(veki|vekcv)[A-Za-z0-9_]+\\(" name "${declaration}")
    string(REPLACE "(" "" name "${name}")
    string(REGEX REPLACE ".*\\((.*)\\)@" "\\1" names "${declaration}")
    string(REGEX MATCHALL "[ *][A-Za-z0-9_]+(,|$)" names "${names}")
    list(JOIN names "" names)
    string(REGEX REPLACE "[ *,]+" " " names "${names}")
    string(STRIP "${names}" names)
    string(APPEND parameters "VEKCV_EXPORT(${name}, \"${names}\")\n")
endforeach()

file(CONFIGURE OUTPUT ${VEKCV_GENERATED}/vekcv_exports.inc CONTENT "@exports@" @ONLY)
file(CONFIGURE OUTPUT ${VEKCV_GENERATED}/vekcv_parameters.inc CONTENT "@parameters@" @ONLY)
file(CONFIGURE OUTPUT ${VEKCV_GENERATED}/vekcv_descriptions.inc CONTENT "@descriptions@" @ONLY)
file(CONFIGURE OUTPUT ${VEKCV_GENERATED}/vekcv.def CONTENT "EXPORTS\n    @definitions@\n" @ONLY)
vekcv_write_version_script(${VEKCV_GENERATED}/vekcv.version VEKCV_${PROJECT_VERSION_MAJOR} "${VEKCV_EXPORTS}")
