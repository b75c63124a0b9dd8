#pragma once

#include <exception>

#pragma GCC visibility push(default)

class CArchive;
class CDumpContext;

/// What a class says of itself at run time.
struct CRuntimeClass {
  const char* m_lpszClassName;
  const CRuntimeClass* m_pBaseClass;
};

/// Root of the classes that carry a run-time class record.
class CObject {
 public:
  static const CRuntimeClass classCObject;
  virtual const CRuntimeClass* GetRuntimeClass() const { return &classCObject; }
  virtual ~CObject() = default;
  virtual void Serialize(CArchive&) {}
  virtual void AssertValid() const {}
  virtual void Dump(CDumpContext&) const {}

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

inline constinit const CRuntimeClass CObject::classCObject{"CObject", nullptr};

/// Gives a class its record, in its declaration. Every record names CObject as its base.
#define DECLARE_DYNAMIC(name)                                                   \
 public:                                                                        \
  static constexpr CRuntimeClass class##name { #name, &CObject::classCObject }; \
  const CRuntimeClass* GetRuntimeClass() const override {                       \
    return &class##name;                                                        \
  }

/// The framework's exception family.
class CException : public std::exception {};
class CUserException : public CException {
 public:
  const char* what() const noexcept override { return "a value could not be read"; }
};

[[noreturn]] inline void AfxThrowUserException() {
  throw CUserException();
}

#pragma GCC visibility pop
