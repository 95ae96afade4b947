#pragma once

#include "store/Configuration.h"

namespace quarl::transfer {

// Passwords of tests and alerts: the members of "secrets" in properties that are a JSON object with "format" and
// "module", the form that docs/export-format.md describes. Of other properties nothing is known, and they stay as they
// are. Text behind the first NUL of properties, mostly more NULs, is no part of the object and stays too.

/// What stands in place of the secrets that a file leaves out: "secrets":"not exported".
inline constexpr const char* kSecretsLeftOut = "not exported";

/// How many tests and alerts have a secret that is not empty.
int CountSecrets(const store::Configuration& configuration);

/// Puts the mark in place of the secrets of those tests and alerts.
void LeaveOutSecrets(store::Configuration& configuration);

/// Gives the tests and alerts that have the mark the secrets that the record of their id has in the store, when it is
/// one of the same module; properties that only lacked them become what the store has, to the letter. From the others
/// the mark is taken. @param known the store's configuration, an empty one when its ids mean other records.
/// @return how many are without their secrets now.
int RestoreSecrets(store::Configuration& planned, const store::Configuration& known);

}  // namespace quarl::transfer
