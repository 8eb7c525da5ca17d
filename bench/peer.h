// The peer: another library that some rows are compared with. Everything of it is weak, that is null in a build without
// it; the peers of the families are declared beside them.
#pragma once

#include <string>

namespace bench::peer {

[[gnu::weak]] std::string name();
[[gnu::weak]] void setThreads(int threads);

}  // namespace bench::peer
