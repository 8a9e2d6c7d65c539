# Tests of the platform: one program per session, the autostart entry, the colour scheme.
# ZDTestPlatform.h is the platform other tests install.
zd_add_test(test_app_single_instance QTEST SOURCES test_single_instance.cpp LIBS zdplatform)
zd_add_test(test_app_platform QTEST SOURCES test_platform.cpp LIBS zdplatform Qt6::Widgets)
