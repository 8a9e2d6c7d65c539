zd_add_test(test_app_snippet_editor QTEST SOURCES test_snippet_editor_view.cpp LIBS zdeditorpane)
# A program to look at the editor pane and the preferences in a theme (not run by ctest).
add_executable(editorpane_showcase editorpane_showcase.cpp)
zd_target_settings(editorpane_showcase)
target_link_libraries(editorpane_showcase PRIVATE zdeditorpane zdpreferences zdhighlight zdeditor)
set_target_properties(editorpane_showcase PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
