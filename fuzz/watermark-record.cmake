talmo_fuzz(watermark-record SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/watermark-record.cpp LIBS talmo_marking)
