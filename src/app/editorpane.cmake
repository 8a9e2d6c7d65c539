# The snippet editor pane and the preferences window.
target_sources(zdapp PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetEditing.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetEditing.h)
target_link_libraries(zdapp PUBLIC zdstore)
target_sources(zdapp PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDTagTokenField.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDTagTokenField.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDLanguageChooser.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDLanguageChooser.h)
target_sources(zdapp PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetEditorView.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetEditorView.h)
target_sources(zdapp PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDPreferenceBinding.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDPreferencesWindow.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDPreferencesWindow.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDLanguagesPane.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDLanguagesPane.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDThemePreview.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDThemePreview.h)
