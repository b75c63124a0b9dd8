#pragma once

#include <string>
#include <vector>

#include "host/exports/runstatistics.h"

namespace host {

/// "3 h", "10 min", "4 s": roughly, for a label.
std::string RoughSpan(Moment span);

/// Where the moments of a run lie from left to right. Long times in which nothing came are cut short, so that
/// the rest can be seen.
class TimeScale {
 public:
  struct Tick {
    double x;
    std::string label;
  };
  struct Cut {
    double left, right;
    Moment span;
  };

  TimeScale(const std::vector<SignalSpan>& spans, double left, double width);

  double X(Moment moment) const;
  const std::vector<Tick>& Ticks() const { return ticks_; }
  const std::vector<Cut>& Cuts() const { return cuts_; }

 private:
  struct Piece {
    Moment start, end;
    double left, right;
  };

  void Split(const std::vector<SignalSpan>& spans);
  void Place(double left, double width);
  void Label();
  Moment Busy() const;

  std::vector<Piece> pieces_;
  std::vector<Tick> ticks_;
  std::vector<Cut> cuts_;
};

}  // namespace host
