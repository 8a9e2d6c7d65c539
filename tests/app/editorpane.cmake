zd_add_test(test_app_snippet_editor QTEST SOURCES test_snippet_editor_view.cpp LIBS zdapp)
zd_add_test(test_app_preferences QTEST SOURCES test_preferences_window.cpp LIBS zdapp)
# A program to look at the editor pane and the preferences in a theme (not run by ctest).
add_executable(editorpane_showcase editorpane_showcase.cpp)
zd_target_settings(editorpane_showcase)
target_link_libraries(editorpane_showcase PRIVATE zdapp)
set_target_properties(editorpane_showcase PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
