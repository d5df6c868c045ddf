talmo_fuzz(media_col SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/media_col.cpp LIBS talmo_paperlib)
