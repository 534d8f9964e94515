// `VORT::XmlConstants`: the names that the Namespaces in XML recommendation fixes, shared by the
// reader and the writer. Plain constants, safe to read from any thread.
#ifndef VORT_XML_XMLCONSTANTS_H
#define VORT_XML_XMLCONSTANTS_H

#include <vort/vort_export.h>

#include <string>

namespace VORT {

struct VORT_EXPORT XmlConstants {
    // Both empty: the prefix of the default namespace and the URI of "no namespace".
    static const std::string DEFAULT_NS_PREFIX;
    static const std::string NULL_NS_URI;

    static char const *const XML_NS_PREFIX;                   // "xml"
    static char const *const XMLNS_ATTRIBUTE;                 // "xmlns"
    static char const *const XML_NS_URI;                      // bound to the prefix "xml"
    static char const *const XMLNS_ATTRIBUTE_NS_URI;          // bound to the prefix "xmlns"
    static char const *const W3C_XML_SCHEMA_INSTANCE_NS_URI;  // XML Schema instances
};

}  // namespace VORT

#endif  // VORT_XML_XMLCONSTANTS_H
