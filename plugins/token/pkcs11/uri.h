#ifndef RNG_TOKEN_URI_H
#define RNG_TOKEN_URI_H

#include <memory>
#include <p11-kit/pkcs11.h>
#include <p11-kit/uri.h>
#include <string>

/// The URI of the plug-in (RFC 7512). It selects the tokens and the modules that the plug-in uses.
class TokenUri {
 public:
  explicit TokenUri(const char* text);

  /// Why the URI is invalid, in a sentence; "" if it is valid.
  const std::string& Problem() const { return problem; }

  std::string ModulePath() const;  ///< "" for the registered modules
  std::string ModuleName() const;  ///< "" for every registered module

  bool Matches(const CK_TOKEN_INFO& token) const;

  /// What differs, for example `its model is "A" instead of "B"`; "" if the token matches.
  std::string Difference(const CK_TOKEN_INFO& token) const;

 private:
  struct Freed {
    void operator()(P11KitUri* uri) const { p11_kit_uri_free(uri); }
  };
  std::unique_ptr<P11KitUri, Freed> uri;
  std::string problem;
};

#endif
