# Editor themes: token colours and the editor's and window's base colours.
target_sources(zdeditor PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDEditorTheme.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDEditorTheme.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDEditorThemes.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDEditorThemes.h)
