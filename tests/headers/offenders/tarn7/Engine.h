// Includes what stands behind the contract.
#pragma once

#include "host/HostServices.h"
#include "host/engine/Engine.h"
