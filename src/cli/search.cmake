# The search commands.
target_sources(zdcli PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDSearchCommands.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSearchCommands.h)
target_link_libraries(zdcli PUBLIC zdsearch zdstore)
