# Shared build settings for Zandrio's targets.

set(ZANDRIO_WARNINGS -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual
    -Wno-unused-parameter)

function(zd_target_settings target)
    target_compile_options(${target} PRIVATE ${ZANDRIO_WARNINGS}
        $<$<CONFIG:Debug>:-Werror>)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_USE_QSTRINGBUILDER)
    if(ZANDRIO_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-omit-frame-pointer)
        target_link_options(${target} PUBLIC -fsanitize=address,undefined)
    endif()
endfunction()

# zd_add_library(name SOURCES ...): a static library for one folder under src/, whose public
# headers are the folder itself.
function(zd_add_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    zd_target_settings(${name})
endfunction()

# zd_add_test(name SOURCES ... LIBS ... [QTEST] [LABELS ...] [ENVIRONMENT ...])
# A GoogleTest executable (main from zdtestsupport, which isolates the user's directories),
# or with QTEST a Qt Test executable with its own main.
function(zd_add_test name)
    cmake_parse_arguments(ARG "QTEST" "" "SOURCES;LIBS;LABELS;ENVIRONMENT" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    zd_target_settings(${name})
    if(ARG_QTEST)
        target_link_libraries(${name} PRIVATE Qt6::Test zdtestsupport_qt ${ARG_LIBS})
    else()
        target_link_libraries(${name} PRIVATE zdtestsupport GTest::gtest GTest::gmock ${ARG_LIBS})
    endif()
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${ARG_ENVIRONMENT}"
        TIMEOUT 600)
    if(ARG_LABELS)
        set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
    endif()
endfunction()
