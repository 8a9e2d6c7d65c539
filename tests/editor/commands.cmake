zd_add_test(test_editor_commands
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_text_commands.cpp
            ${CMAKE_CURRENT_LIST_DIR}/test_markdown_commands.cpp
            ${CMAKE_CURRENT_LIST_DIR}/ZDEditTestNotation.h
    LIBS zdeditor)
