// The peer: another library that some rows are compared with. All its functions are weak, that is null in a build
// without it; those for the rows of a folder are declared in its peer.h.
#pragma once

#include <string>

namespace bench::peer {

[[gnu::weak]] std::string name();
[[gnu::weak]] void setThreads(int threads);

}  // namespace bench::peer
