zd_add_test(test_editor_themes SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_editor_themes.cpp LIBS zdeditor)
