# Makes of an installation what Debian's policy asks of a package. CPack runs it between the two.
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(doc ${root}/share/doc/quorvane)
set(source ${CMAKE_CURRENT_LIST_DIR}/../..)

function(compress)
    execute_process(COMMAND gzip -9n ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The changelog in Debian's format, whose dates are like "Sat, 21 Nov 2026 00:00:00 +0000".
function(write_changelog output)
    file(STRINGS ${source}/CHANGELOG.md lines)
    set(text "")
    set(signature "")
    foreach(line IN LISTS lines)
        if(line MATCHES "^## ([0-9.]+) - ([0-9-]+)$")
            string(APPEND text "${signature}quorvane (${CMAKE_MATCH_1}) unstable; urgency=medium\n\n")
            execute_process(COMMAND date --utc --rfc-email --date ${CMAKE_MATCH_2} OUTPUT_VARIABLE date
                            OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
            set(signature "\n -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}\n\n")
        elseif(signature AND line MATCHES "^- (.*)$")
            string(APPEND text "  * ${CMAKE_MATCH_1}\n")
        elseif(signature AND line MATCHES "^  (.*)$")
            string(APPEND text "    ${CMAKE_MATCH_1}\n")
        endif()
    endforeach()
    file(WRITE ${output} "${text}${signature}")
endfunction()

# The licence is named in the copyright file, and the zsh of Debian looks for completions of packages in a folder of its own.
file(REMOVE ${doc}/LICENSE ${doc}/CHANGELOG.md)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${doc}
     FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(RENAME ${root}/share/zsh/site-functions ${root}/share/zsh/vendor-completions)

write_changelog(${doc}/changelog)
file(GLOB pages ${root}/share/man/man1/*.1)
compress(${doc}/changelog ${pages})
file(CHMOD ${doc}/changelog.gz PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
