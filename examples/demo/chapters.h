#pragma once

#include "generator/centre.h"

/// The chapters of the demo, in their order. Each prints what it does; a call of the library that goes other than it
/// should ends the demo with an exception.
namespace demo {

// bulk.cpp
void fillCache(const generator::Centre &centre);
void showCentre(const generator::Centre &centre);

// sites.cpp
void showSite();

// records.cpp
void filter(const generator::Centre &centre);
void update(const generator::Centre &centre);
void deleteSome(const generator::Centre &centre);
void beRefused();

// events.cpp
void receiveLive(const generator::Centre &centre);
void showLastEvents(const generator::Centre &centre);
void prune();

} // namespace demo
