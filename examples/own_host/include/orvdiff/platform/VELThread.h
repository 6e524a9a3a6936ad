#pragma once

#include "acme/Core.h"
