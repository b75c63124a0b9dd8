#pragma once

namespace host {

/// A kind of what is published. A record may carry several of the first three.
enum class Kind : unsigned {
  fix = 1,         ///< A position sentence.
  satellites = 2,  ///< A whole group of satellites in view.
  report = 4,      ///< What the receiver reports of its settings, or a sentence of its make.
  raw = 8,         ///< An epoch of raw measurements.
  ephemeris = 16,
  bin = 32,
};

/// A set of kinds.
class Kinds {
 public:
  constexpr Kinds() = default;
  constexpr explicit Kinds(Kind kind) : Kinds(static_cast<unsigned>(kind)) {}
  static constexpr Kinds All() { return Kinds(63); }

  constexpr bool Has(Kind kind) const { return (bits_ & static_cast<unsigned>(kind)) != 0; }
  constexpr bool IsEmpty() const { return bits_ == 0; }
  constexpr void Add(Kind kind) { bits_ |= static_cast<unsigned>(kind); }
  constexpr Kinds operator&(Kinds other) const { return Kinds(bits_ & other.bits_); }
  constexpr bool operator==(const Kinds&) const = default;

 private:
  constexpr explicit Kinds(unsigned bits) : bits_(bits) {}

  unsigned bits_ = 0;
};

}  // namespace host
