#pragma once

#include <exception>

#pragma GCC visibility push(default)

class CArchive;
class CDumpContext;

/// What a class says of itself at run time.
struct CRuntimeClass {
  const char* m_lpszClassName;  ///< As it is written in the source.
  CRuntimeClass* m_pBaseClass;  ///< Null for CObject.
};

/// Root of the classes that carry a run-time class record.
class CObject {
 public:
  /// The record of this class.
  static CRuntimeClass classCObject;
  /// The record of the object's own class. It tells classes apart; it makes no objects.
  virtual CRuntimeClass* GetRuntimeClass() const { return &classCObject; }
  virtual ~CObject() = default;
  /// Stand in the framework's interface and do nothing here.
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

/// Gives a class its record, in its declaration. Every record names CObject as its base.
#define DECLARE_DYNAMIC(name)                                                          \
 public:                                                                               \
  static inline constinit CRuntimeClass class##name { #name, &CObject::classCObject }; \
  CRuntimeClass* GetRuntimeClass() const override {                                    \
    return &class##name;                                                               \
  }

/// The framework's exception family.
class CException : public std::exception {};
/// Thrown by a CParser that was told to throw.
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
