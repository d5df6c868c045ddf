talmo_fuzz(xml_entities SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/xml_entities.cpp LIBS talmo_settings)
