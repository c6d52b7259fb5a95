// The XML document object on Linux: pugixml behind the same small port that
// the Windows document object implements. Loading is synchronous, so the
// async property changes nothing here. What pugixml doesn't do itself is done
// as the document object does it: the rules of xml_rules.h, text as the
// concatenation of the descendants' text, a failed load leaving an empty
// document. The file is read and replaced as a file of our own in a shared
// folder (own_file.h): a save goes to a temporary file beside the target and
// is renamed over it, so a crash never leaves half a file.
#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "platform/adapters.h"
#include "platform/common/xml_encoding.h"
#include "platform/common/xml_rules.h"
#include "platform/own_file.h"
#include "platform/posix/own_file_posix.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

class PugiNode final : public XmlNode {
  public:
    // A node of the tree, or an element created and not yet appended.
    // Each knows its document's preserveWhiteSpace, which its text follows.
    PugiNode(pugi::xml_node node, const bool* preserve)
        : node_(node), preserveWhiteSpace_(preserve) {}
    PugiNode(std::string name, const bool* preserve)
        : pendingName_(std::move(name)), preserveWhiteSpace_(preserve) {}
    PugiNode(pugi::xml_attribute attribute, const bool* preserve)
        : attribute_(attribute), preserveWhiteSpace_(preserve) {}

    std::unique_ptr<XmlNode> selectSingleNode(std::string_view path) override {
        if (!node_) return nullptr;
        checkSelectionPath(path);
        pugi::xpath_node found;
        try {
            found = node_.select_node(std::string(path).c_str());
        } catch (const pugi::xpath_exception& error) {
            raiseXmlFailure(error.what());
        }
        if (found.attribute()) {
            return std::make_unique<PugiNode>(found.attribute(), preserveWhiteSpace_);
        }
        if (found.node()) return std::make_unique<PugiNode>(found.node(), preserveWhiteSpace_);
        return nullptr;
    }

    void appendChild(XmlNode& child) override {
        auto& element = dynamic_cast<PugiNode&>(child);
        if (!node_ || element.node_ || element.pendingName_.empty()) {
            raiseXmlFailure("Insert position Node must be a Child of the Node to insert under.");
        }
        if (node_.type() == pugi::node_document &&
            node_.find_child([](pugi::xml_node n) { return n.type() == pugi::node_element; })) {
            raiseSecondDocumentElement();
        }
        element.node_ = node_.append_child(element.pendingName_.c_str());
        element.pendingName_.clear();
    }

    std::string text() const override {
        if (attribute_) return attribute_.value();
        if (!node_ || node_.type() == pugi::node_pcdata || node_.type() == pugi::node_cdata) {
            return node_ ? node_.value() : std::string();
        }
        std::string text;
        // Where white space is not preserved, the document object drops it
        // at both ends of the text, but not from a CDATA section there.
        size_t firstEnd = 0, lastStart = 0;
        bool firstIsText = false, lastIsText = false;
        for (pugi::xml_node n = node_.first_child(); n;) {
            if (n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata) {
                if (text.empty() && !firstEnd) {
                    firstIsText = n.type() == pugi::node_pcdata;
                    firstEnd = std::string_view(n.value()).size();
                }
                lastIsText = n.type() == pugi::node_pcdata;
                lastStart = text.size();
                text += n.value();
            }
            // Depth first, without recursion.
            if (n.first_child()) {
                n = n.first_child();
                continue;
            }
            while (n && !n.next_sibling() && n != node_) n = n.parent();
            if (!n || n == node_) break;
            n = n.next_sibling();
        }
        if (!*preserveWhiteSpace_) {
            constexpr std::string_view kWhiteSpace = " \t\r\n";
            if (lastIsText) {
                const size_t end = text.find_last_not_of(kWhiteSpace);
                text.erase(end == std::string::npos || end < lastStart ? lastStart : end + 1);
            }
            if (firstIsText) {
                const size_t start = text.find_first_not_of(kWhiteSpace);
                text.erase(0, std::min(start == std::string::npos ? text.size() : start,
                                       std::min(firstEnd, text.size())));
            }
        }
        return text;
    }

    void setText(std::string_view text) override {
        if (attribute_) {
            attribute_.set_value(std::string(text).c_str());
            return;
        }
        if (!node_) raiseXmlFailure("The node is not part of a document.");
        while (node_.first_child()) node_.remove_child(node_.first_child());
        if (!text.empty())
            node_.append_child(pugi::node_pcdata).set_value(std::string(text).c_str());
    }

  private:
    pugi::xml_node node_;
    std::string pendingName_;
    pugi::xml_attribute attribute_;
    const bool* preserveWhiteSpace_;
};

class PugiDocument final : public XmlDocument {
  public:
    PugiDocument() : root_(document_, &preserveWhiteSpace_) {}

    void setAsync(bool) override {}
    void setPreserveWhiteSpace(bool preserve) override { preserveWhiteSpace_ = preserve; }

    bool load(std::string_view path) override {
        unsigned int options =
            pugi::parse_default | pugi::parse_declaration | pugi::parse_comments | pugi::parse_pi;
        if (preserveWhiteSpace_) options |= pugi::parse_ws_pcdata;
        // A link, pipe or oversized file is as damaged as bad XML; so is a DTD,
        // which the document object is told to refuse.
        std::optional<std::string> content;
        try {
            content = readOwnFile(path, kMaxSettingsFileBytes);
        } catch (const AutomationError&) {
        }
        pugi::xml_parse_result result;
        if (content) {
            // pugixml knows no windows-1252: such a file is read as UTF-8.
            std::optional<std::string> decoded = decodeDeclaredSingleByte(*content);
            if (decoded) content = std::move(decoded);
            result = document_.load_buffer(content->data(), content->size(),
                                           options | pugi::parse_doctype,
                                           decoded ? pugi::encoding_utf8 : pugi::encoding_auto);
        }
        loadedEncoding_ = result ? result.encoding : pugi::encoding_utf8;
        const bool loaded = result && !hasDoctype();
        if (!loaded) document_.reset();  // what was parsed before the error goes too
        return loaded;
    }

    XmlNode& node() override { return root_; }

    std::unique_ptr<XmlNode> createElement(std::string_view name) override {
        checkElementName(name);
        return std::make_unique<PugiNode>(std::string(name), &preserveWhiteSpace_);
    }

    void save(std::string_view path) override {
        const std::string target(path);
        if (target.empty()) raiseXmlFailure("The path is empty.");
        std::string content;
        struct Writer final : pugi::xml_writer {
            std::string& content;
            explicit Writer(std::string& c) : content(c) {}
            void write(const void* data, size_t size) override {
                content.append(static_cast<const char*>(data), size);
            }
        } writer(content);
        // No declaration of our own, no white space: what the document object
        // writes, in the encoding that the declaration names.
        document_.save(writer, "", pugi::format_raw | pugi::format_no_declaration,
                       pugi::encoding_utf8);
        content = encodeAsDeclared(content, loadedEncoding_ == pugi::encoding_utf16_be);
        // No fsync, as the document object has none: the rename keeps a
        // crashed process from leaving half a file.
        if (const int error = replaceOwnFile(target, content, 0644)) raiseFileError(error);
    }

  private:
    bool hasDoctype() const {
        for (pugi::xml_node n = document_.first_child(); n; n = n.next_sibling()) {
            if (n.type() == pugi::node_doctype) return true;
        }
        return false;
    }

    [[noreturn]] static void raiseFileError(int error) {
        switch (error) {
            case ENOENT:
            case ENOTDIR:
                raise(kErrPathNotFound);
            case EACCES:
            case EPERM:
            case EROFS:
                raise(kErrPermissionDenied);
            case ENOSPC:
                raise(61);
            default:
                raise(75);
        }
    }

    pugi::xml_document document_;
    PugiNode root_;
    bool preserveWhiteSpace_ = false;
    pugi::xml_encoding loadedEncoding_ = pugi::encoding_utf8;
};

class PugiXml final : public XmlPort {
  public:
    std::unique_ptr<XmlDocument> createDocument() override {
        return std::make_unique<PugiDocument>();
    }
};

}  // namespace

XmlPort& systemXml() {
    static PugiXml xml;
    return xml;
}

}  // namespace ostrel::platform
