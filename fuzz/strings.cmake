talmo_fuzz(strings SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/strings.cpp LIBS talmo_platform)
