#include "export_row.h"
#include "feature/peer.h"

namespace bench {
namespace {

/** Angles of as many vectors as an image has pixels. The polynomial of the peer is of another degree. */
const Row kArctanRows[] = {
    {"vekibFastArctan_32f",
     [](RoiSize size) {
         const auto make = [=](Role role) { return Operand::make(role, Element::k32f, 1, size); };
         Work work{
             {size, {}, {make(Role::kSource), make(Role::kSource), make(Role::kDestination)}, nullptr, 2e-3}, {}, {}};
         work.vekcv = [=, operands = work.data.operands] {
             const auto array = [&](size_t i) { return static_cast<float*>(operands[i].memory.get()); };
             expectOk(vekibFastArctan_32f(array(0), array(1), array(2), size.width * size.height),
                      "vekibFastArctan_32f");
         };
         if (peer::fastAtan2)
             work.peer = peer::fastAtan2(work.data);
         return work;
     }},
};
const Family arctan("FastArctan", kArctanRows);

}  // namespace
}  // namespace bench
