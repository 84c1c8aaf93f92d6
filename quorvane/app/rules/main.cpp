#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/app/rules/RulesDocument.h"
#include "quorvane/scan/locations/LocationTable.h"

#include <cstdio>

// Prints docs/RULES.md.
int main() {
  const std::string text = quorvane::rulesDocument(quorvane::linuxLocations(), quorvane::MessageCatalogue::english());
  const bool isPrinted = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
  return isPrinted ? 0 : 1;
}
