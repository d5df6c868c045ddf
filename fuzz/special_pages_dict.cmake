talmo_fuzz(special_pages_dict SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/special_pages_dict.cpp LIBS talmo_ticket)
