#include "wishes.h"

#include <tuple>

namespace irmcore::view {

namespace {

auto parts(const Pixel& p) { return std::make_tuple(p.x, p.y); }
auto parts(const Span& s) { return std::tuple_cat(parts(s.from), parts(s.to)); }
auto parts(const Tool& t) { return std::tuple_cat(std::make_tuple(t.id, t.kind), parts(t.place)); }
auto parts(const Parameters& p) {
    return std::tie(p.emissivity, p.distance, p.humidity, p.air, p.reflected, p.offset);
}
auto parts(const IsothermWish& i) { return std::tie(i.on, i.type, i.low, i.high, i.colour); }
auto parts(const Look& l) {
    return std::tie(l.palette, l.window, l.low, l.high, l.mode, l.inset, l.blend);
}
auto parts(const SimulatedTarget& t) {
    return std::tuple_cat(parts(t.centre), std::make_tuple(t.width, t.height, t.celsius));
}

} // namespace

bool operator==(const Tool& a, const Tool& b) { return parts(a) == parts(b); }
bool operator==(const Parameters& a, const Parameters& b) { return parts(a) == parts(b); }
bool operator==(const IsothermWish& a, const IsothermWish& b) { return parts(a) == parts(b); }
bool operator==(const Look& a, const Look& b) { return parts(a) == parts(b); }
bool operator==(const SimulatedTarget& a, const SimulatedTarget& b) { return parts(a) == parts(b); }

} // namespace irmcore::view
