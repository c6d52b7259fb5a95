// The XML document object, as far as the settings file needs it: load a
// file, select by a relative path of element names, create and append
// elements (a document holds one document element), read and write an
// element's text, save to a file. Failures raise the document's own error.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace ostrel::platform {

class XmlNode {
  public:
    virtual ~XmlNode() = default;
    // selectSingleNode from this node; null when nothing matches. Raises for
    // a path the selection language can't read.
    virtual std::unique_ptr<XmlNode> selectSingleNode(std::string_view path) = 0;
    // appendChild of an element that the same document created. Raises when
    // the node can't take it (a second document element).
    virtual void appendChild(XmlNode& child) = 0;
    // The text of the node and its descendants; writing it replaces them.
    virtual std::string text() const = 0;
    virtual void setText(std::string_view text) = 0;
};

class XmlDocument {
  public:
    virtual ~XmlDocument() = default;
    // The two loading properties; a new document loads asynchronously and
    // drops white space.
    virtual void setAsync(bool async) = 0;
    virtual void setPreserveWhiteSpace(bool preserve) = 0;
    // Replaces what the document held; false (the document empty) for a
    // file that can't be read or parsed.
    virtual bool load(std::string_view path) = 0;
    // The document itself as the parent of its document element.
    virtual XmlNode& node() = 0;
    // createElement: raises for a name that is not a valid element name.
    virtual std::unique_ptr<XmlNode> createElement(std::string_view name) = 0;
    // Writes the document as it stands; raises when the file can't be written.
    virtual void save(std::string_view path) = 0;
};

class XmlPort {
  public:
    virtual ~XmlPort() = default;
    // A new, empty document; raises (429) when the object can't be made.
    virtual std::unique_ptr<XmlDocument> createDocument() = 0;
};

}  // namespace ostrel::platform
