// Documents in and out.

#include <algorithm>

#include "core/data_sink.h"
#include "xml/cls_xml_frame.h"
#include "xml/parse_engine.h"
#include "xml/well_formed.h"
#include "xml/xml_charset.h"
#include "xml/xml_declaration.h"
#include "xml/xml_writer.h"

namespace zantrel {

namespace {

bool writeFile(const XString& path, ByteSpan content, MethodCall& call) {
  constexpr std::size_t kPiece = 262144;
  FileDataSink file;
  if (!file.open(path.getUtf8(), call.log())) return false;
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(content.size()));
  for (std::size_t at = 0; at < content.size(); at += kPiece) {
    const ByteSpan piece = content.subspan(at, std::min(kPiece, content.size() - at));
    if (!file.write(piece, call.log())) return false;
    bool abort = false;
    progress.consume(static_cast<std::int64_t>(piece.size()), abort);
    if (abort) {
      call.log().logError("Aborted by the application.");
      return false;
    }
  }
  return file.commit(call.log());
}

}  // namespace

// The tree is made beside the one that the handle is on, which stays when this fails.
bool ClsXml::load(MethodCall& call, std::string_view text, bool trim) {
  constexpr std::size_t kMostBytes = 0x7FFFFFFF;  // as ParseEngine::parse() takes
  if (text.size() > kMostBytes) {
    call.log().logError("The document is larger than 2 GB.");
    call.log().logData64("numBytes", static_cast<std::int64_t>(text.size()));
    return false;
  }
  ProgressMonitor& progress = call.startProgress(static_cast<std::int64_t>(text.size()));
  if (requireWellFormed_ && !checkWellFormed(text, call.log())) return false;
  const XmlStore::Ref store = XmlStore::create();
  TreeInfo* const tree = ParseEngine(*store, {trim}, call.log(), &progress).parse(text);
  if (tree == nullptr) {
    call.log().logError(progress.aborted() ? "Aborted by the application."
                                           : "The text has no element.");
    return false;
  }
  place_.replace(store, tree);
  return true;
}

bool ClsXml::loadFile(MethodCall& call, const XString& path, bool trim) {
  DataBuffer bytes, storage;
  std::string_view text;
  if (!bytes.loadFileUtf8(path.getUtf8(), call.log())) return false;
  return xmlTextOf(bytes.bytes(), storage, text, call.log()) && load(call, text, trim);
}

bool ClsXml::LoadXml(std::string_view text, ProgressEvent* progress) {
  return call("LoadXml", progress, [&](MethodCall& c) { return load(c, text, true); });
}

bool ClsXml::LoadXml2(std::string_view text, bool autoTrim, ProgressEvent* progress) {
  return call("LoadXml2", progress, [&](MethodCall& c) { return load(c, text, autoTrim); });
}

bool ClsXml::LoadXmlFile(const XString& path, ProgressEvent* progress) {
  return call("LoadXmlFile", progress, [&](MethodCall& c) { return loadFile(c, path, true); });
}

bool ClsXml::LoadXmlFile2(const XString& path, bool autoTrim, ProgressEvent* progress) {
  return call("LoadXmlFile2", progress, [&](MethodCall& c) { return loadFile(c, path, autoTrim); });
}

bool ClsXml::SaveXml(const XString& path, ProgressEvent* progress) {
  return call("SaveXml", progress, [&](MethodCall& c) {
    DataBuffer bytes;
    {
      const XmlLock lock(place_);
      TreeNode* const node = place_.node();
      const std::string_view encoding =
          node->isRoot() ? declared(*place_.tree(), "encoding") : std::string_view();
      StringBuffer text{std::string_view()};
      writeXml(node, false, text);
      if (!xmlBytesOf(node, text.view(), encoding, bytes, c.log())) return false;
    }
    return writeFile(path, bytes.bytes(), c);
  });
}

bool ClsXml::GetXmlX(XString& out) {
  return on("GetXml", [&](TreeNode& node, MethodCall&) {
    StringBuffer text{std::string_view()};
    writeXml(&node, false, text);
    if (!out.setFromUtf8(text.view())) throw std::bad_alloc();
    return true;
  });
}

bool ClsXml::get_RequireWellFormed() {
  return property([&](TreeNode&) { return requireWellFormed_; });
}

void ClsXml::set_RequireWellFormed(bool required) {
  property([&](TreeNode&) { requireWellFormed_ = required; });
}

// The declaration and what else stands before the root

void ClsXml::get_Encoding(XString& out) {
  property([&](TreeNode&) { return out.setFromUtf8(declared(*place_.tree(), "encoding")); });
}

void ClsXml::set_Encoding(std::string_view encoding) {
  property([&](TreeNode&) { declareEncoding(place_.store(), *place_.tree(), encoding); });
}

bool ClsXml::get_Standalone() {
  return property([&](TreeNode&) { return place_.tree()->standalone; });
}

void ClsXml::set_Standalone(bool standalone) {
  property([&](TreeNode&) {
    if (standalone) makeDeclaration(place_.store(), *place_.tree());
    place_.tree()->standalone = standalone;
  });
}

void ClsXml::get_DocType(XString& out) {
  property([&](TreeNode&) {
    std::string_view text = place_.tree()->docType.view();
    if (text.ends_with('\n')) text.remove_suffix(1);
    return out.setFromUtf8(text);
  });
}

void ClsXml::set_DocType(std::string_view docType) {
  property([&](TreeNode&) {
    if (!docType.empty()) makeDeclaration(place_.store(), *place_.tree());
    if (!place_.tree()->docType.setString(docType)) throw std::bad_alloc();
  });
}

bool ClsXml::AddStyleSheet(std::string_view instruction) {
  return on("AddStyleSheet", [&](TreeNode&, MethodCall& c) {
    if (!instruction.starts_with("<?xml-stylesheet ") || !instruction.ends_with("?>")) {
      c.log().logError(
          "A style sheet instruction is <?xml-stylesheet with values and ?> at its end.");
      return false;
    }
    makeDeclaration(place_.store(), *place_.tree());
    StringBuffer& all = place_.tree()->styleSheet;
    return all.append(instruction) && all.appendChar('\n');
  });
}

}  // namespace zantrel
