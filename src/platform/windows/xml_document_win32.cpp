// The platform's XML document object, created by its class identifier
// {2933BF90-7B36-11D2-B20E-00C04F983E60}, behind the XML port. Its own
// errors reach the core as the run-time errors a host would see.
#include <windows.h>

#include <msxml2.h>
#include <wrl/client.h>

#include "platform/adapters.h"
#include "platform/common/xml_rules.h"
#include "platform/windows/com_call_win32.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

using Microsoft::WRL::ComPtr;

constexpr CLSID kDomDocument = {
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

// A path as the document's calls take it: a VARIANT holding a BSTR.
class PathVariant {
  public:
    explicit PathVariant(std::string_view path) : text_(path) {
        VariantInit(&value_);
        value_.vt = VT_BSTR;
        value_.bstrVal = text_.get();
    }
    VARIANT get() const { return value_; }

  private:
    Bstr text_;
    VARIANT value_;
};

// The apartment's globals go when its thread ends, which may be after the
// host left COM; the object's code may be gone by then, so what is still
// held is let go without a call into it.
bool apartmentAlive() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return CoGetApartmentType(&type, &qualifier) != CO_E_NOTINITIALIZED;
}

template <class Interface>
void letGo(ComPtr<Interface>& pointer) {
    if (!apartmentAlive()) pointer.Detach();
}

class MsxmlNode final : public XmlNode {
  public:
    explicit MsxmlNode(ComPtr<IXMLDOMNode> node) : node_(std::move(node)) {}
    ~MsxmlNode() override { letGo(node_); }
    MsxmlNode(const MsxmlNode&) = delete;
    MsxmlNode& operator=(const MsxmlNode&) = delete;

    std::unique_ptr<XmlNode> selectSingleNode(std::string_view path) override {
        checkSelectionPath(path);
        ComPtr<IXMLDOMNode> found;
        const Bstr query(path);
        checkHresult(node_->selectSingleNode(query.get(), found.GetAddressOf()));
        if (!found) return nullptr;
        return std::make_unique<MsxmlNode>(std::move(found));
    }

    void appendChild(XmlNode& child) override {
        DOMNodeType type = NODE_INVALID;
        checkHresult(node_->get_nodeType(&type));
        if (type == NODE_DOCUMENT) {
            ComPtr<IXMLDOMDocument> document;
            ComPtr<IXMLDOMElement> top;
            checkHresult(node_->QueryInterface(IID_IXMLDOMDocument,
                                               reinterpret_cast<void**>(document.GetAddressOf())));
            checkHresult(document->get_documentElement(top.GetAddressOf()));
            if (top) raiseSecondDocumentElement();
        }
        ComPtr<IXMLDOMNode> appended;
        checkHresult(node_->appendChild(static_cast<MsxmlNode&>(child).node_.Get(),
                                        appended.GetAddressOf()));
    }

    std::string text() const override {
        Bstr text;
        checkHresult(node_->get_text(text.put()));
        return text.utf8();
    }

    void setText(std::string_view text) override {
        const Bstr value(text);
        checkHresult(node_->put_text(value.get()));
    }

  private:
    ComPtr<IXMLDOMNode> node_;
};

class MsxmlDocument final : public XmlDocument {
  public:
    explicit MsxmlDocument(ComPtr<IXMLDOMDocument> document)
        : document_(std::move(document)), root_(document_) {}
    ~MsxmlDocument() override { letGo(document_); }
    MsxmlDocument(const MsxmlDocument&) = delete;
    MsxmlDocument& operator=(const MsxmlDocument&) = delete;

    void setAsync(bool async) override {
        checkHresult(document_->put_async(async ? VARIANT_TRUE : VARIANT_FALSE));
    }
    void setPreserveWhiteSpace(bool preserve) override {
        checkHresult(document_->put_preserveWhiteSpace(preserve ? VARIANT_TRUE : VARIANT_FALSE));
    }

    bool load(std::string_view path) override {
        const PathVariant file(path);
        VARIANT_BOOL loaded = VARIANT_FALSE;
        checkHresult(document_->load(file.get(), &loaded));
        return loaded == VARIANT_TRUE;
    }

    XmlNode& node() override { return root_; }

    std::unique_ptr<XmlNode> createElement(std::string_view name) override {
        checkElementName(name);
        ComPtr<IXMLDOMElement> element;
        const Bstr tag(name);
        checkHresult(document_->createElement(tag.get(), element.GetAddressOf()));
        return std::make_unique<MsxmlNode>(std::move(element));
    }

    void save(std::string_view path) override {
        const PathVariant file(path);
        checkHresult(document_->save(file.get()));
    }

  private:
    ComPtr<IXMLDOMDocument> document_;
    MsxmlNode root_;
};

class MsxmlPort final : public XmlPort {
  public:
    std::unique_ptr<XmlDocument> createDocument() override {
        ComPtr<IXMLDOMDocument> document;
        if (FAILED(createInstance(kDomDocument, IID_IXMLDOMDocument,
                                  reinterpret_cast<void**>(document.GetAddressOf())))) {
            raise(kErrCantCreate);
        }
        return std::make_unique<MsxmlDocument>(std::move(document));
    }
};

}  // namespace

XmlPort& systemXml() {
    static MsxmlPort xml;
    return xml;
}

}  // namespace ostrel::platform
