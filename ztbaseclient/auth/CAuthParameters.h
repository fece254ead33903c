#pragma once

#include "tovin/FrameworkClass.h"
#include "tovin/iPropertyCollection.h"
#include "ztbaseclient/Export.h"

/// The user name and password that a job's parameters carry, the password enciphered while it is kept.
///
///     CAuthParameters parameters;
///     parameters.SetParameters(*collection);      // its "UserName" and "Password"
///     tovin::WideString password;
///     parameters.GetPassword(password);           // wiping it is up to the caller
///
/// The cipher is that of the credentials string and no better: its key is part of this library. Looking up
/// Windows groups and logging a session's user on are no part of this class; they exist on one platform only.
///
/// - Ownership: owns its texts.
/// - Shape: texts never null; the enciphered password is UTF-8 in Base64, enciphered, in Base64 again.
/// - Errors: "Property %ls does not exist"; "Error decoding", "Decrypt failed" or "Decode failed" for an
///   enciphered password that is none. A failure changes nothing.
class ZTBASECLIENT_API CAuthParameters : public tovin::FrameworkClass<CAuthParameters, tovin::Object> {
 public:
  static constexpr const char* ClassName = "CAuthParameters";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<CAuthParameters> m_class;

  /// The properties that SetParameters looks for unless told otherwise.
  static const wchar_t* const UserNameParameter;
  static const wchar_t* const PasswordParameter;

  CAuthParameters();
  CAuthParameters(const CAuthParameters& other);
  CAuthParameters& operator=(const CAuthParameters& other);
  ~CAuthParameters() override;

  /// Takes both from a collection, whose password is clear text.
  void SetParameters(const tovin::iPropertyCollection& parameters,
                     const wchar_t* userNameParameter = UserNameParameter,
                     const wchar_t* passwordParameter = PasswordParameter);

  const wchar_t* GetUserName() const noexcept { return userName_; }
  /// Null empties.
  void SetUserName(const wchar_t* text);

  /// Deciphers. \param out untouched on failure.
  void GetPassword(tovin::WideString& out) const;
  void SetPassword(const wchar_t* text);
  const wchar_t* GetEncipheredPassword() const noexcept { return cipher_; }
  /// Takes it as it is; GetPassword says whether it is one.
  void SetEncipheredPassword(const wchar_t* text);

 private:
  tovin::WideString userName_{L""};
  tovin::WideString cipher_{L""};
};
