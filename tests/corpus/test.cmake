include(ZantrelXmlPeers)
zantrel_link_xml_peers(${program})
