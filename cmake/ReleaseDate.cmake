# quorvane_release_date(VARIABLE): the day of this version's release, as the heading of CHANGELOG.md has it. A version without its
# heading at the top is refused, so that the two cannot part.
function(quorvane_release_date variable)
    set(changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
    file(STRINGS ${changelog} headings REGEX "^## ")
    list(GET headings 0 newest)
    if(NOT newest MATCHES "^## ([0-9.]+) - (20[0-9][0-9]-[01][0-9]-[0-3][0-9])$" OR
       NOT CMAKE_MATCH_1 VERSION_EQUAL PROJECT_VERSION)
        message(FATAL_ERROR "CHANGELOG.md begins with '${newest}', not with '## ${PROJECT_VERSION} - YYYY-MM-DD'.")
    endif()
    set(${variable} ${CMAKE_MATCH_2} PARENT_SCOPE)
endfunction()
