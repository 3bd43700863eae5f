#pragma once

#include "Grants.h"
#include "Seed.h"

namespace kelp::sandbox {

/// Everything that the endpoints share. One request at a time works on it.
struct State
{
    Seed seed;
    Grants grants;

    /// Makes the seed's own refresh tokens valid.
    [[nodiscard]] static State fromSeed(const Seed &seed)
    {
        State state{seed, {}};
        for (const SeedAccount &account : seed.accounts) {
            if (!account.refreshToken.isEmpty())
                state.grants.addRefreshToken(account.refreshToken, account.email);
        }
        return state;
    }

    [[nodiscard]] SeedAccount *account(const QString &email)
    {
        for (SeedAccount &candidate : seed.accounts) {
            if (candidate.email == email)
                return &candidate;
        }
        return nullptr;
    }
};

} // namespace kelp::sandbox
