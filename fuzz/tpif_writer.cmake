talmo_fuzz(tpif_writer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/tpif_writer.cpp LIBS talmo_tpif LibXml2::LibXml2)
