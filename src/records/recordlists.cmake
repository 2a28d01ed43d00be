# wzr_make_record_lists(<output> <folder> <header>...)
#
# Makes the lists of fields from the headers that declare the records, so that each field and what
# it means is written once, where its users read it:
#
#     /// Volume of a voice call.
#     struct BLCallVolume
#     {
#         int nOut = 0; ///< Level of the loudspeaker
#     };
#
# becomes
#
#     WZR_RECORD(BLCallVolume, "<folder>/connectionrecords.h", "Volume of a voice call.",
#         WZR_FIELD(nOut, "Level of the loudspeaker"))
#
# Comments may go on in further lines. It fails where it finds anything else, above all a member
# without a comment. The output is left as it is when it would not change.
function(wzr_make_record_lists output folder)
    set(lists "// Made by recordlists.cmake from the headers of the records.\n\n"
        "#include \"records/recordplan_p.h\"\n#include \"records/records.h\"\n\n"
        "// Compilers give the places of members of all classes without virtual bases.\n"
        "#ifdef __GNUC__\n#pragma GCC diagnostic ignored \"-Winvalid-offsetof\"\n#endif\n")
    string(JOIN "" lists ${lists})
    set(names "")
    foreach(header IN LISTS ARGN)
        get_filename_component(file "${header}" NAME)
        file(READ "${header}" text)

        # What only the compiler needs, and comments that belong to no record.
        string(REGEX REPLACE "\n(#|//( |\n)|WZR_DECLARE_RECORD)[^\n]*" "\n" text "\n${text}")
        string(REGEX REPLACE "\n\n+" "\n" text "${text}")

        # Comments become texts of C++ in one line each.
        string(REPLACE "\\" "\\\\" text "${text}")
        string(REPLACE "\"" "\\\"" text "${text}")
        string(REGEX REPLACE "\n +///< " " " text "${text}")
        set(before "")
        while(NOT before STREQUAL text)
            set(before "${text}")
            string(REGEX REPLACE "\n/// ([^\n]*)\n/// " "\n/// \\1 " text "${text}")
        endwhile()

        string(REGEX REPLACE "(\n    [A-Za-z][^\n;=]*) = [a-z0-9]+;" "\\1;" text "${text}")
        string(REGEX REPLACE "\n    [A-Za-z][^\n;]* ([A-Za-z_0-9]+); +///< ([^\n]+)"
            ",\n    WZR_FIELD(\\1, \"\\2\")" text "${text}")
        string(REGEX REPLACE "\n/// ([^\n]+)\nstruct ([A-Za-z_0-9]+)\n{,"
            "\nWZR_RECORD(\\2, \"${folder}/${file}\", \"\\1\"," text "${text}")
        string(REPLACE "\n};" ")" text "${text}")

        string(REGEX REPLACE "\nWZR_RECORD\\([^\n]*,(\n    WZR_FIELD\\([^\n]*)+" "" rest "${text}")
        string(STRIP "${rest}" rest)
        if(NOT rest STREQUAL "")
            message(FATAL_ERROR "${header}: no records whose members are all described:\n${rest}")
        endif()
        string(APPEND lists "${text}")
        string(REGEX MATCHALL "WZR_RECORD\\([A-Za-z_0-9]+" found "${text}")
        list(APPEND names ${found})
    endforeach()

    string(REPLACE "WZR_RECORD(" "\n        &RecordTypeOf<" names "${names}")
    string(REPLACE ";" ">::value," names "${names}")
    string(APPEND lists "\nstd::vector<const records::RecordType*> records::allRecords()\n"
        "{\n    return {${names}>::value};\n}\n")
    set(present "")
    if(EXISTS "${output}")
        file(READ "${output}" present)
    endif()
    if(NOT present STREQUAL lists)
        file(WRITE "${output}" "${lists}")
    endif()
endfunction()
