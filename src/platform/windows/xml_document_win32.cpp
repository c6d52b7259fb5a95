// The platform's XML document object, created by its class identifier
// {2933BF90-7B36-11D2-B20E-00C04F983E60}, behind the XML port. Its own
// errors reach the core as the run-time errors a host would see.
#include <windows.h>

#include <msxml2.h>
#include <wrl/client.h>

#include <cstring>
#include <optional>

#include "platform/adapters.h"
#include "platform/common/xml_encoding.h"
#include "platform/common/xml_rules.h"
#include "platform/own_file.h"
#include "platform/windows/com_call_win32.h"
#include "platform/windows/own_file_win32.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

using Microsoft::WRL::ComPtr;

constexpr CLSID kDomDocument = {
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

// IXMLDOMDocument2, where the document's properties are set.
constexpr IID kDomDocument2 = {
    0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

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
        // The file is read as a file of our own (own_file.h) and handed over
        // as a stream: a link, pipe or oversized file is as damaged as bad XML.
        std::optional<std::string> content;
        try {
            content = readOwnFile(path, kMaxSettingsFileBytes);
        } catch (const OwnFileRefused&) {
        }
        bigEndian_ = content && content->starts_with("\xFE\xFF");
        ComPtr<IStream> stream;
        HGLOBAL memory = content ? GlobalAlloc(GMEM_MOVEABLE, content->size() + 1) : nullptr;
        if (memory) {
            std::memcpy(GlobalLock(memory), content->data(), content->size());
            GlobalUnlock(memory);
            if (FAILED(CreateStreamOnHGlobal(memory, TRUE, stream.GetAddressOf()))) {
                GlobalFree(memory);
                stream.Reset();
            }
            if (stream) {
                ULARGE_INTEGER size{};
                size.QuadPart = content->size();
                stream->SetSize(size);
            }
        }
        VARIANT source;
        VariantInit(&source);
        source.vt = VT_UNKNOWN;
        source.punkVal = stream.Get();
        VARIANT_BOOL loaded = VARIANT_FALSE;
        // Damaged content fails the load, which is no error of the call.
        if (stream && FAILED(document_->load(source, &loaded))) loaded = VARIANT_FALSE;
        // A DTD makes the file damaged, whether or not the object refused it.
        ComPtr<IXMLDOMDocumentType> doctype;
        if (loaded == VARIANT_TRUE && document_->get_doctype(doctype.GetAddressOf()) == S_OK &&
            doctype) {
            loaded = VARIANT_FALSE;
        }
        if (loaded != VARIANT_TRUE) {
            VARIANT_BOOL ignored = VARIANT_FALSE;
            const Bstr empty("");
            document_->loadXML(empty.get(), &ignored);  // what was parsed goes too
        }
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
        if (path.empty()) raiseXmlFailure("The path is empty.");
        // The object writes UTF-8 where the document has no declaration, and
        // Wine's writes UTF-8 under any declaration: so the declaration is
        // taken out while the object writes, and the text is then put into
        // the encoding the declaration names.
        ComPtr<IXMLDOMNode> declaration;
        std::string content;
        checkHresult(document_->get_firstChild(declaration.GetAddressOf()));
        Bstr name;
        if (declaration && SUCCEEDED(declaration->get_nodeName(name.put())) &&
            name.utf8() == "xml") {
            Bstr text;
            ComPtr<IXMLDOMNode> removed;
            checkHresult(declaration->get_xml(text.put()));
            checkHresult(document_->removeChild(declaration.Get(), removed.GetAddressOf()));
            content = text.utf8() + "\r\n";
        } else {
            declaration.Reset();
        }
        std::string written;
        const HRESULT saved = saveToMemory(written);
        if (declaration) putBack(declaration);
        checkHresult(saved);
        if (written.starts_with("\xEF\xBB\xBF")) written.erase(0, 3);
        // A declaration the object would add of its own gives way to the document's.
        if (const size_t end = written.find("?>");
            declaration && written.starts_with("<?xml") && end != std::string::npos) {
            written.erase(0, written.find_first_not_of("\r\n", end + 2));
        }
        content += written;
        // A failure is the system's, as the object's own save gave it; a
        // refused or read-only file is 70, as a host sees the object's
        // E_ACCESSDENIED.
        const DWORD error = replaceOwnFile(path, encodeAsDeclared(content, bigEndian_));
        if (error == ERROR_ACCESS_DENIED) raise(kErrPermissionDenied);
        checkHresult(HRESULT_FROM_WIN32(error));
    }

  private:
    // What the object writes, as it would write the file.
    HRESULT saveToMemory(std::string& bytes) {
        ComPtr<IStream> stream;
        HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.GetAddressOf());
        if (FAILED(hr)) return hr;
        VARIANT target;
        VariantInit(&target);
        target.vt = VT_UNKNOWN;
        target.punkVal = stream.Get();
        STATSTG stat{};
        HGLOBAL memory = nullptr;
        if (FAILED(hr = document_->save(target)) ||
            FAILED(hr = stream->Stat(&stat, STATFLAG_NONAME)) ||
            FAILED(hr = GetHGlobalFromStream(stream.Get(), &memory))) {
            return hr;
        }
        bytes.assign(static_cast<const char*>(GlobalLock(memory)),
                     static_cast<size_t>(stat.cbSize.QuadPart));
        GlobalUnlock(memory);
        return S_OK;
    }

    // The declaration back in front of whatever the document holds.
    void putBack(const ComPtr<IXMLDOMNode>& declaration) {
        ComPtr<IXMLDOMNode> first, inserted;
        document_->get_firstChild(first.GetAddressOf());
        VARIANT before;
        VariantInit(&before);
        if (first) {
            before.vt = VT_UNKNOWN;
            before.punkVal = first.Get();
        }
        document_->insertBefore(declaration.Get(), before, inserted.GetAddressOf());
    }

    ComPtr<IXMLDOMDocument> document_;
    MsxmlNode root_;
    bool bigEndian_ = false;  // the UTF-16 file loaded last was big-endian
};

void setProperty(IXMLDOMDocument2& document, std::string_view name, bool on) {
    const Bstr property(name);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BOOL;
    value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
    document.setProperty(property.get(), value);
}

class MsxmlPort final : public XmlPort {
  public:
    std::unique_ptr<XmlDocument> createDocument() override {
        ComPtr<IXMLDOMDocument> document;
        if (FAILED(createInstance(kDomDocument, IID_IXMLDOMDocument,
                                  reinterpret_cast<void**>(document.GetAddressOf())))) {
            raise(kErrCantCreate);
        }
        // No DTD and nothing fetched from outside: the file is one that users
        // may write. An object too old for a property still meets the DTD
        // check of load.
        ComPtr<IXMLDOMDocument2> withProperties;
        if (SUCCEEDED(document->QueryInterface(
                kDomDocument2, reinterpret_cast<void**>(withProperties.GetAddressOf())))) {
            setProperty(*withProperties.Get(), "ProhibitDTD", true);
            setProperty(*withProperties.Get(), "ResolveExternals", false);
            setProperty(*withProperties.Get(), "AllowDocumentFunction", false);
            setProperty(*withProperties.Get(), "AllowXsltScript", false);
        }
        document->put_resolveExternals(VARIANT_FALSE);
        document->put_validateOnParse(VARIANT_FALSE);
        return std::make_unique<MsxmlDocument>(std::move(document));
    }
};

}  // namespace

XmlPort& systemXml() {
    static MsxmlPort xml;
    return xml;
}

}  // namespace ostrel::platform
