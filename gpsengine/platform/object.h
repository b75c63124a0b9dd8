#pragma once

#include <exception>

#pragma GCC visibility push(default)

class CArchive;
class CDumpContext;

/// Run-time class information.
struct CRuntimeClass {
  const char* m_lpszClassName;  ///< The class name.
  CRuntimeClass* m_pBaseClass;  ///< Null for CObject.
};

/// Root of the classes that carry a run-time class record.
class CObject {
 public:
  /// The record of this class.
  static CRuntimeClass classCObject;
  /// The record of the object's class. For comparison only; it cannot create objects.
  virtual CRuntimeClass* GetRuntimeClass() const { return &classCObject; }
  virtual ~CObject() = default;
  /// Part of the framework's interface; they do nothing here.
  ///@{
  virtual void Serialize(CArchive&) {}
  virtual void AssertValid() const {}
  virtual void Dump(CDumpContext&) const {}
  ///@}

 protected:
  /// Only as a base.
  CObject() = default;
  /// For a derived class that may be copied.
  ///@{
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
  ///@}
};

inline constinit CRuntimeClass CObject::classCObject{"CObject", nullptr};

/// Declares the record of a class. Every record names CObject as its base.
#define DECLARE_DYNAMIC(name)                                                          \
 public:                                                                               \
  static inline constinit CRuntimeClass class##name { #name, &CObject::classCObject }; \
  CRuntimeClass* GetRuntimeClass() const override {                                    \
    return &class##name;                                                               \
  }

/// The framework's exception family.
class CException : public std::exception {};
/// Thrown by a CParser in throwing mode.
class CUserException : public CException {
 public:
  /// For a log; it names no field.
  const char* what() const noexcept override { return "a value could not be read"; }
};

/// Throws a CUserException.
[[noreturn]] inline void AfxThrowUserException() {
  throw CUserException();
}

#pragma GCC visibility pop
