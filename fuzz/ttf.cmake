talmo_fuzz(ttf SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/ttf.cpp LIBS talmo_marking)
