talmo_fuzz(plist SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/plist.cpp LIBS talmo_platform)
