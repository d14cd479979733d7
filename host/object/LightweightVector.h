// The host's name for a sequence.
#pragma once

#include <vector>

template <class Item>
using LightweightVector = std::vector<Item>;
