#ifndef TESTS_TOKEN_INSTALLED_SOFT_HSM_H
#define TESTS_TOKEN_INSTALLED_SOFT_HSM_H

#include <string>

/// The tokens of SoftHSM, in the tree of the case.
class SoftHsm {
 public:
  SoftHsm();

  /// Makes a token and returns its serial number.
  std::string Add(const std::string& label) const;

  /// Programs that start later do not find the token.
  void TakeOut(const std::string& serial) const;
  void Insert(const std::string& serial) const;
};

#endif
