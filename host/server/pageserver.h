#pragma once

#include <memory>
#include <string>

#include "host/server/pagehub.h"

namespace host {

/// Serves the live page over HTTP, on threads of its own that know nothing but the hub.
class PageServer {
 public:
  virtual ~PageServer() = default;  ///< Stops. The hubs are closed by then.
  virtual int Port() const = 0;
};

/// Starts a server of records and of the receiver's sentences on that address; port 0 lets the system choose
/// one. Throws a Failure if it cannot listen, or if the program was built without the page.
std::unique_ptr<PageServer> StartPageServer(PageHub& hub, PageHub& sentences, const std::string& address,
                                            int port);

}  // namespace host
