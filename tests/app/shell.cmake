# Tests of the program's shell: single instance, sidebar drag rules, snippet lists, search field.
zd_add_test(test_app_single_instance QTEST SOURCES test_single_instance.cpp LIBS zdapp)
zd_add_test(test_app_sidebar_model QTEST SOURCES test_sidebar_model.cpp LIBS zdapp)
zd_add_test(test_app_snippet_collection QTEST SOURCES test_snippet_collection.cpp LIBS zdapp)
