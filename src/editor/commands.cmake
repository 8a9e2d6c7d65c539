# The editor's text commands: pure functions from (text, selection, settings) to an edit.
target_sources(zdeditor PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDTextEdit.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDTextEdit.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDTextCommands.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDTextCommands.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDMarkdownCommands.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDMarkdownCommands.h)
