/// The cut that every library makes.
#pragma once

namespace bench {

/// A point of the plane and its normal: askew through the middle of the surfaces that are generated, which come apart.
constexpr double cutPoint[3] = {0.01, 0.02, 0.03}, cutNormal[3] = {0.3, 0.5, 1};

} // namespace bench
