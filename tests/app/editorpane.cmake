zd_add_test(test_app_snippet_editor QTEST SOURCES test_snippet_editor_view.cpp LIBS zdapp)
zd_add_test(test_app_preferences QTEST SOURCES test_preferences_window.cpp LIBS zdapp)
