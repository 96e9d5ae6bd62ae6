// Content that becomes something else, and back.

#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"
#include "xml/xml_content.h"

namespace zantrel {

namespace {

/// Bytes in content, as callers ask for them; false for encryption without a password.
bool isComplete(const BinaryContent& how, LogBase& log) {
  if (!how.encrypt || !how.password.empty()) return true;
  log.logError("A password is needed.");
  return false;
}

}  // namespace

template <class Transform>
bool ClsXml::transform(const char* name, const Transform& work) {
  return on(name, [&](TreeNode& node, MethodCall& c) { return work(node, c.log()); });
}

bool ClsXml::DecodeContent() {
  return transform("DecodeContent", decodeContent);
}

bool ClsXml::DecodeEntities() {
  return transform("DecodeEntities", [](TreeNode& node, LogBase&) {
    decodeContentEntities(node);
    return true;
  });
}

bool ClsXml::QEncodeContent(std::string_view charset) {
  return transform("QEncodeContent", [&](TreeNode& node, LogBase& log) {
    return encodeContent(node, charset, WordCoding::Q, log);
  });
}

bool ClsXml::BEncodeContent(std::string_view charset) {
  return transform("BEncodeContent", [&](TreeNode& node, LogBase& log) {
    return encodeContent(node, charset, WordCoding::B, log);
  });
}

bool ClsXml::EncryptContent(const XString& password) {
  return transform("EncryptContent", [&](TreeNode& node, LogBase& log) {
    const BinaryContent how{.encrypt = true, .password = password.utf8()};
    return isComplete(how, log) && wrapContent(node, how, log);
  });
}

bool ClsXml::DecryptContent(const XString& password) {
  return transform("DecryptContent", [&](TreeNode& node, LogBase& log) {
    const BinaryContent how{.encrypt = true, .password = password.utf8()};
    return isComplete(how, log) && unwrapContent(node, how, log);
  });
}

bool ClsXml::ZipContent() {
  return transform("ZipContent", [](TreeNode& node, LogBase& log) {
    return wrapContent(node, {.zip = true}, log);
  });
}

bool ClsXml::UnzipContent() {
  return transform("UnzipContent", [](TreeNode& node, LogBase& log) {
    return unwrapContent(node, {.zip = true}, log);
  });
}

bool ClsXml::GetBinaryContentX(bool unzip, bool decrypt, const XString& password, DataBuffer& out) {
  return transform("GetBinaryContent", [&](TreeNode& node, LogBase& log) {
    const BinaryContent how{unzip, decrypt, password.utf8()};
    return isComplete(how, log) && getBinaryContent(node, how, out, log);
  });
}

bool ClsXml::SetBinaryContent(const DataBuffer& bytes, bool zip, bool encrypt,
                              const XString& password) {
  return transform("SetBinaryContent", [&](TreeNode& node, LogBase& log) {
    const BinaryContent how{zip, encrypt, password.utf8()};
    return isComplete(how, log) && setBinaryContent(node, bytes.bytes(), how, log);
  });
}

// Files are read and written while the tree is not locked.

bool ClsXml::SetBinaryContentFromFile(const XString& path, bool zip, bool encrypt,
                                      const XString& password) {
  return call("SetBinaryContentFromFile", [&](MethodCall& c) {
    const BinaryContent how{zip, encrypt, password.utf8()};
    DataBuffer bytes;
    if (!isComplete(how, c.log()) || !bytes.loadFileUtf8(path.getUtf8(), c.log())) return false;
    const XmlLock lock(place_);
    return setBinaryContent(*place_.node(), bytes.bytes(), how, c.log());
  });
}

bool ClsXml::SaveBinaryContent(const XString& path, bool unzip, bool decrypt,
                               const XString& password) {
  return call("SaveBinaryContent", [&](MethodCall& c) {
    const BinaryContent how{unzip, decrypt, password.utf8()};
    if (!isComplete(how, c.log())) return false;
    DataBuffer bytes;
    {
      const XmlLock lock(place_);
      if (!getBinaryContent(*place_.node(), how, bytes, c.log())) return false;
    }
    return bytes.saveToFileUtf8(path.getUtf8(), c.log());
  });
}

bool ClsXml::ZipTree() {
  return transform("ZipTree", [&](TreeNode& node, LogBase& log) {
    StringBuffer zipped{std::string_view()};
    if (!zipTree(node, zipped, log)) return false;
    node.setContent(zipped.view());
    node.setCdata(false);
    removeAllChildren(node, place_.store());
    return true;
  });
}

bool ClsXml::UnzipTree() {
  return transform("UnzipTree", [&](TreeNode& node, LogBase& log) {
    return unzipTree(node, place_.store(), log);
  });
}

}  // namespace zantrel
