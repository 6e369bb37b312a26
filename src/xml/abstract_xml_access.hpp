#pragma once
// Base of the readers that turn one XML document into a record.

namespace xml_access_library {

class abstract_xml_access {
public:
    virtual ~abstract_xml_access() = default;
    // True when the document was read into the reader's record.
    virtual bool parse() = 0;

protected:
    abstract_xml_access() = default;
    abstract_xml_access(const abstract_xml_access&) = default;
    abstract_xml_access& operator=(const abstract_xml_access&) = default;
};

} // namespace xml_access_library
