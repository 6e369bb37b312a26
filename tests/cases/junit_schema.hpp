#pragma once
// Checks a JUnit document against the schema CI systems read (tests/data/cases/junit.xsd).

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <memory>
#include <string>

namespace test_support {

// Empty when the document is valid, else the validator's first complaint.
inline std::string junit_schema_error(const std::string& a_document) {
    std::string error;
    std::unique_ptr<xmlSchemaParserCtxt, decltype(&xmlSchemaFreeParserCtxt)> parser(
        xmlSchemaNewParserCtxt(QIRO_TEST_DATA_DIR "/cases/junit.xsd"), xmlSchemaFreeParserCtxt);
    std::unique_ptr<xmlSchema, decltype(&xmlSchemaFree)> schema(xmlSchemaParse(parser.get()),
                                                                xmlSchemaFree);
    if (!schema) {
        return "the schema did not load";
    }
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(a_document.data(), static_cast<int>(a_document.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    if (!document) {
        return "not well-formed XML";
    }
    std::unique_ptr<xmlSchemaValidCtxt, decltype(&xmlSchemaFreeValidCtxt)> validator(
        xmlSchemaNewValidCtxt(schema.get()), xmlSchemaFreeValidCtxt);
    xmlSchemaSetValidStructuredErrors(
        validator.get(),
        [](void* a_error, xmlErrorPtr a_found) {
            auto& text = *static_cast<std::string*>(a_error);
            if (text.empty() && a_found != nullptr && a_found->message != nullptr) {
                text = std::to_string(a_found->line) + ": " + a_found->message;
            }
        },
        &error);
    if (xmlSchemaValidateDoc(validator.get(), document.get()) != 0 && error.empty()) {
        error = "invalid";
    }
    return error;
}

} // namespace test_support
