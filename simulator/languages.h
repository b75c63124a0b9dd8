#pragma once

#include <memory>

#include "simulator/receiver.h"

namespace simulator {

/// What sets a model apart from others of its language.
struct Model {
  int baud = 9600;
  bool has_beacon = false;        ///< a beacon receiver is built in
  bool knows_keep_alive = false;  ///< the text "QRV Zelo" is no news to it
};

// One receiver of each command language.
std::unique_ptr<Receiver> MakePlain(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeAshtech(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeStarlink(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeLeica(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeSokkiaAxis(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeJFamily(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeSirf(const Options& options, const Model& model);
std::unique_ptr<Receiver> MakeGsr2650(const Options& options, const Model& model);

}  // namespace simulator
