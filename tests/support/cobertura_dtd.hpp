#pragma once
// Checks a Cobertura document against coverage-04.dtd (tests/data/coverage/), as CI systems
// that read it expect it to be.

#include <libxml/parser.h>
#include <libxml/valid.h>

#include <memory>
#include <string>

namespace test_support {

inline void quiet_dtd_message(void*, const char*, ...) {}

// Empty when the document is valid, else why not.
inline std::string cobertura_dtd_error(const std::string& a_document) {
    std::unique_ptr<xmlDtd, decltype(&xmlFreeDtd)> dtd(
        xmlParseDTD(nullptr, reinterpret_cast<const xmlChar*>(QIRO_TEST_DATA_DIR
                                                              "/coverage/coverage-04.dtd")),
        xmlFreeDtd);
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(a_document.data(), static_cast<int>(a_document.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    if (!dtd || !document) {
        return !dtd ? "the document type did not load" : "not well-formed XML";
    }
    std::unique_ptr<xmlValidCtxt, decltype(&xmlFreeValidCtxt)> context(xmlNewValidCtxt(),
                                                                       xmlFreeValidCtxt);
    context->error = quiet_dtd_message;
    context->warning = quiet_dtd_message;
    return xmlValidateDtd(context.get(), document.get(), dtd.get()) == 1 ? "" : "invalid";
}

} // namespace test_support
