#include "uri.h"

#include "text.h"

#include <new>

namespace {

std::string OrEmpty(const char* text) { return text ? text : ""; }

template <std::size_t Size>
std::string Compare(const char* what, const unsigned char (&wanted)[Size],
                    const unsigned char (&found)[Size]) {
  const std::string expected = Trimmed(wanted);
  const std::string actual = Trimmed(found);
  if (wanted[0] == 0 || expected == actual) return "";  // 0: the URI does not have this attribute
  return std::string("its ") + what + " is \"" + Plain(actual) + "\" instead of \"" +
         Plain(expected) + '"';
}

}  // namespace

TokenUri::TokenUri(const char* text) : uri(p11_kit_uri_new()) {
  if (!uri) throw std::bad_alloc();
  const int result = p11_kit_uri_parse(text, P11_KIT_URI_FOR_TOKEN, uri.get());
  if (result != P11_KIT_URI_OK) {
    problem = std::string("The plug-in was built with the URI ") + text +
              ", which is invalid: " + p11_kit_uri_message(result) +
              ". Rebuild it with a valid one.";
  } else if (p11_kit_uri_any_unrecognized(uri.get())) {
    problem = std::string("The plug-in was built with the URI ") + text +
              ", which has attributes other than manufacturer, model, serial and token. Rebuild it "
              "without them.";
  }
}

std::string TokenUri::ModulePath() const { return OrEmpty(p11_kit_uri_get_module_path(uri.get())); }

std::string TokenUri::ModuleName() const { return OrEmpty(p11_kit_uri_get_module_name(uri.get())); }

bool TokenUri::Matches(const CK_TOKEN_INFO& token) const { return Difference(token).empty(); }

std::string TokenUri::Difference(const CK_TOKEN_INFO& token) const {
  const CK_TOKEN_INFO& wanted = *p11_kit_uri_get_token_info(uri.get());
  for (const std::string& difference :
       {Compare("manufacturer", wanted.manufacturerID, token.manufacturerID),
        Compare("model", wanted.model, token.model),
        Compare("serial number", wanted.serialNumber, token.serialNumber),
        Compare("label", wanted.label, token.label)}) {
    if (!difference.empty()) return difference;
  }
  return "";
}
