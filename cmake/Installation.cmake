# What `cmake --install` lays down. All of it is relative to the prefix, and the program finds nothing by its place: its texts are
# built in. So an installation may be moved as a whole.
include(GNUInstallDirs)

install(TARGETS quorvane RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(TARGET manual)
    install(DIRECTORY ${QUORVANE_MANUAL_DIR}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR})
    set(completions ${QUORVANE_MANUAL_DIR}/completions)
    install(FILES ${completions}/quorvane.bash RENAME quorvane
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${completions}/_quorvane DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
    install(FILES ${completions}/quorvane.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
