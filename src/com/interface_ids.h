// The identifiers of the automation interfaces and classes. The type library
// knows only the newest identifier of each interface; the older ones stay
// answered (same pointer) and registered, so hosts built against an earlier
// version of the component keep working.
#pragma once

#include "com/ostrel_h.h"
#include "com/registration_table.h"

#include <array>
#include <cstddef>

namespace ostrel::com {

constexpr IID toIid(const registration::Guid& guid) {
    return {guid.data1,
            guid.data2,
            guid.data3,
            {guid.data4[0], guid.data4[1], guid.data4[2], guid.data4[3], guid.data4[4],
             guid.data4[5], guid.data4[6], guid.data4[7]}};
}

constexpr registration::Guid fromIid(const GUID& guid) {
    return {guid.Data1,
            guid.Data2,
            guid.Data3,
            {guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3], guid.Data4[4],
             guid.Data4[5], guid.Data4[6], guid.Data4[7]}};
}

template <std::size_t N>
constexpr std::array<IID, N> toIids(const std::array<registration::Guid, N>& guids) {
    std::array<IID, N> iids{};
    for (std::size_t i = 0; i < N; ++i) iids[i] = toIid(guids[i]);
    return iids;
}

inline constexpr std::array<IID, 1> kOlderPCInfoIids = toIids(registration::kOlderPCInfoIids);
inline constexpr std::array<IID, 9> kOlderSoftwareProductIids =
    toIids(registration::kOlderSoftwareProductIids);

}  // namespace ostrel::com
