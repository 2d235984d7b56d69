// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateCheck.h"

// An update check that only counts its starts: the test reports each outcome
// itself, by emitting the signal, when it chooses.
class ScriptedUpdateCheck : public UpdateCheck {
public:
    using UpdateCheck::UpdateCheck;

    void check() override { ++m_started; }
    int started() const { return m_started; }

private:
    int m_started = 0;
};
