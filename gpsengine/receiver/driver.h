#pragma once

#include <span>

#include "gpsengine/receiver/command.h"

#pragma GCC visibility push(default)

/// What distinguishes a model: properties, and the command set of each operation. An empty set means that the
/// model lacks the operation. A model's class needs code only for what cannot be expressed as a set.
struct CGPSDriver {
  /// Lines in order, each followed by its wait.
  using Commands = std::span<const CGPSCommand>;

  const char* pszName = "";   ///< The display name.
  int nBaudrate = 9600;       ///< Bits a second, as the model leaves its factory.
  bool bRawData = false;      ///< Sends raw measurements.
  bool bOrthoHeight = false;  ///< The height of its GGA is orthometric.
  bool bDgps = false;         ///< The source of corrections can be chosen.

  Commands start = {};           ///< At every start, even if the port is the host's and not open.
  Commands keepAlive = {};       ///< On a silent line.
  Commands defaultNmea = {};     ///< Position, motion and satellites.
  Commands ggaOnlyNmea = {};     ///< The position alone.
  Commands queryNmea = {};       ///< Which sentences are on.
  Commands querySettings = {};   ///< The settings as a whole.
  Commands queryBeacon = {};     ///< The beacon. A model that has this takes "$GPMSK" to tune it.
  Commands queryElevMask = {};   ///< The elevation mask.
  Commands setElevMask = {};     ///< That mask; "#" stands for the degrees.
  Commands queryDgps = {};       ///< The source of corrections.
  Commands queryOmniStar = {};   ///< The Omnistar subscription.
  Commands queryLband = {};      ///< The L-band satellites.
  Commands queryWaas = {};       ///< The WAAS corrections.
  Commands dgpsStatusOn = {};    ///< A message about the corrections in use.
  Commands dgpsStatusOff = {};   ///< No such message.
  Commands sendCorrection = {};  ///< The user datum.

  /// The beacon query shared by several makes.
  static constexpr CGPSCommand kQueryBeacon[] = {{"$GPCRQ,MSS\r\n", 200}, {"$GPCRQ,MSK\r\n", 200}};
};

/// Declares, in the class of a model, its run-time class record and its row, s_Driver, which also has its
/// name.
#define DECLARE_RECEIVER(name)                   \
  DECLARE_DYNAMIC(name)                          \
  CString GetName() override {                   \
    return s_Driver.pszName;                     \
  }                                              \
                                                 \
 protected:                                      \
  const CGPSDriver& GetDriver() const override { \
    return s_Driver;                             \
  }                                              \
                                                 \
 private:                                        \
  static const CGPSDriver s_Driver;

#pragma GCC visibility pop
