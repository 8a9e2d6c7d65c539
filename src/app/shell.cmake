# The program's shell: start-up, single instance, main window, sidebar, snippet list, search field.
target_sources(zdapp PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/ZDApplication.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDApplication.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDAppServices.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDAppServices.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDLibraryActions.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDLibraryActions.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDLibraryLoader.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDLibraryLoader.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDMainWindowLibrary.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ZDSearchView.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSearchView.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDShellAssembly.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDShellAssembly.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSmartGroupEditor.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSmartGroupEditor.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSmartGroupRows.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSmartGroupRows.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSingleInstance.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSingleInstance.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSidebarModel.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSidebarModel.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSidebarView.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSidebarView.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetCollection.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetCollection.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetListModel.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetListModel.h
    ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetListView.cpp ${CMAKE_CURRENT_LIST_DIR}/ZDSnippetListView.h)
target_link_libraries(zdapp PUBLIC zdsearch zdstore Qt6::Network Qt6::DBus)
