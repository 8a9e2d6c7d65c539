# The real program in a real X server: its main window must appear.
add_test(NAME window_smoke COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/window_smoke.sh $<TARGET_FILE:zandrio>)
set_tests_properties(window_smoke PROPERTIES TIMEOUT 120 LABELS "xvfb")
