# quorvane_library(NAME [FOLDERS sub...] [EXCLUDE file...] [SOURCES generated...] [LINKS target...] [PACKAGES target...])
#
# Makes the library target quorvane_NAME with the alias quorvane::NAME from the *.cpp and *.h of the current folder and of
# FOLDERS below it, without EXCLUDE. LINKS are the floors below, PACKAGES what is installed outside this project; both are
# passed on to whoever links the library.
# Its headers are a verified header set: the preset `layers` compiles each of them alone.
function(quorvane_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;EXCLUDE;SOURCES;LINKS;PACKAGES")
    set(target quorvane_${name})

    set(sourcePatterns *.cpp)
    set(headerPatterns *.h)
    foreach(folder IN LISTS arg_FOLDERS)
        list(APPEND sourcePatterns ${folder}/*.cpp)
        list(APPEND headerPatterns ${folder}/*.h)
    endforeach()
    file(GLOB sources CONFIGURE_DEPENDS ${sourcePatterns})
    file(GLOB headers CONFIGURE_DEPENDS ${headerPatterns})
    foreach(file IN LISTS arg_EXCLUDE)
        list(REMOVE_ITEM sources ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    endforeach()
    list(APPEND sources ${arg_SOURCES})

    add_library(${target} STATIC ${sources})
    add_library(quorvane::${name} ALIAS ${target})

    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${arg_LINKS} ${arg_PACKAGES})
endfunction()
