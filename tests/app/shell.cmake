# Tests of the program's shell: sidebar drag rules, snippet lists, search field.
zd_add_test(test_app_sidebar_model QTEST SOURCES test_sidebar_model.cpp LIBS zdshell)
zd_add_test(test_app_snippet_collection QTEST SOURCES test_snippet_collection.cpp LIBS zdshell)

# The scripted run of the whole program (offscreen here; under Xvfb with screenshots by hand).
add_executable(zd_scripted_run zd_scripted_run.cpp)
zd_target_settings(zd_scripted_run)
target_link_libraries(zd_scripted_run PRIVATE zdshell zdeditorpane zdtestsupport Qt6::Test)
set_target_properties(zd_scripted_run PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
add_test(NAME app_scripted_run COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripted_run.sh $<TARGET_FILE:zd_scripted_run>)
set_tests_properties(app_scripted_run PROPERTIES TIMEOUT 300)
zd_add_test(test_app_search_view QTEST SOURCES test_search_view.cpp LIBS zdshell)
zd_add_test(test_app_library_actions QTEST SOURCES test_library_actions.cpp LIBS zdshell)
target_include_directories(test_app_library_actions PRIVATE ${CMAKE_SOURCE_DIR}/tests/store)
zd_add_test(test_app_smart_group_rows QTEST SOURCES test_smart_group_rows.cpp LIBS zdshell)
