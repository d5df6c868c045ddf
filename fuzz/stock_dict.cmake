talmo_fuzz(stock_dict SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/stock_dict.cpp LIBS talmo_ticket)
