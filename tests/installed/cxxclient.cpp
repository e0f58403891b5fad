// The same client in C++, where the structures live in a namespace.
#include <tarnel/tarnel.h>

using namespace tarnelLib::api;

#include "client.c"
