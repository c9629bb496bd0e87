// Sizes of tests with many or large inputs.
#pragma once

namespace vrn::test {

// `count`, or a tenth of it in builds that take ten times as long: those with sanitizers or coverage. The other builds
// compare the results of all inputs; these look for faults that a few of them show.
constexpr int scaled(int count) noexcept {
#ifdef VRN_SLOW_BUILD
    return count / 10;
#else
    return count;
#endif
}

} // namespace vrn::test
