// Serving the parent's requests, one at a time, on the main thread.
#pragma once

namespace kesext {

/// Serves requests until the parent closes the request pipe.
void serveRequests();

}  // namespace kesext
