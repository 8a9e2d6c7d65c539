# The library commands (create, add, list, show, rm, folder, check) and the snippet JSON form.
target_sources(zdcli PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetJson.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetJson.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDCliLibrary.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDCliLibrary.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDStoreCommands.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetCommands.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ZDLibraryCommands.cpp)
target_link_libraries(zdcli PUBLIC zdstore)
