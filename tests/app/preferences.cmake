zd_add_test(test_app_preferences QTEST SOURCES test_preferences_window.cpp ZDTestPlatform.h
    LIBS zdpreferences zdplatform zdeditor zdprefs)
