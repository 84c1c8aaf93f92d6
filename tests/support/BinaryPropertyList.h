#pragma once

#include <string>

namespace quorvane {

/// The binary form of an XML property list, as the library writes it; ends the test program when the XML is none.
std::string binaryPropertyList(const std::string& xml);

}  // namespace quorvane
