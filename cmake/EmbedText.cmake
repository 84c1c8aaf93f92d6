# embed_text(OUT.cpp FILE VARIABLE): a build step that writes OUT.cpp, which defines
#   namespace quorvane { extern const std::string_view VARIABLE; }
# as the bytes of FILE, and runs again when FILE changes. The step is this same file in script mode.
if(CMAKE_SCRIPT_MODE_FILE)
    file(READ ${INPUT} hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," characters "${hex}")
    string(LENGTH "${hex}" digits)
    math(EXPR size "${digits} / 2")
    # One element more than the text, so that an empty file is still an array.
    file(WRITE ${OUTPUT}
"#include <string_view>

namespace {
constexpr char bytes[] = {${characters}'\\0'};
}

namespace quorvane {
extern const std::string_view ${VARIABLE};
const std::string_view ${VARIABLE}{bytes, ${size}};
}
")
    return()
endif()

function(embed_text output input variable)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DINPUT=${input} -DOUTPUT=${output} -DVARIABLE=${variable}
                -P ${PROJECT_SOURCE_DIR}/cmake/EmbedText.cmake
        DEPENDS ${input} ${PROJECT_SOURCE_DIR}/cmake/EmbedText.cmake
        COMMENT "Embedding ${input}"
        VERBATIM)
endfunction()
