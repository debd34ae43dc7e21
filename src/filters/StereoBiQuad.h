#pragma once

#include "filters/BiQuad.h"

namespace Sonra::Audio::Filters {

// Two sections, one per channel, run in the two lanes of one vector. Every lane performs exactly
// BiQuad's operations in BiQuad's order, so each channel's output is bit-identical to its own
// section's; the vector only halves the instruction count.
class StereoBiQuad {
public:
    using Pair = float __attribute__((vector_size(8)));

    StereoBiQuad(const BiQuad& left, const BiQuad& right) {
        const BiQuad::Kernel l = left.kernel(), r = right.kernel();
        b0 = Lanes{l.b0, r.b0};
        b1 = Lanes{l.b1, r.b1};
        b2 = Lanes{l.b2, r.b2};
        a1 = Lanes{l.a1, r.a1};
        a2 = Lanes{l.a2, r.a2};
        // The state floats widened exactly, so nothing is lost by keeping them as doubles.
        x1 = Lanes{l.x1, r.x1};
        x2 = Lanes{l.x2, r.x2};
        y1 = Lanes{l.y1, r.y1};
        y2 = Lanes{l.y2, r.y2};
    }

    Pair step(Pair x) {
        const Lanes xd = __builtin_convertvector(x, Lanes);
        const Lanes y = (b2 * x2 + (b0 * xd + b1 * x1)) - a1 * y1 - a2 * y2;
        const Pair out = __builtin_convertvector(y, Pair);
        x2 = x1;
        x1 = xd;
        y2 = y1;
        y1 = __builtin_convertvector(out, Lanes);
        return out;
    }

    void keepState(BiQuad& left, BiQuad& right) const {
        left.keepState(kernelOf(left, 0));
        right.keepState(kernelOf(right, 1));
    }

private:
    using Lanes = double __attribute__((vector_size(16)));

    BiQuad::Kernel kernelOf(const BiQuad& s, int lane) const {
        BiQuad::Kernel k = s.kernel();
        k.x1 = static_cast<float>(x1[lane]);
        k.x2 = static_cast<float>(x2[lane]);
        k.y1 = static_cast<float>(y1[lane]);
        k.y2 = static_cast<float>(y2[lane]);
        return k;
    }

    Lanes b0, b1, b2, a1, a2;
    Lanes x1, x2, y1, y2;
};

} // namespace Sonra::Audio::Filters
