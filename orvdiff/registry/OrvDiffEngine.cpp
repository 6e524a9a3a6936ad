#include "orvdiff/registry/OrvDiffEngine.h"

OrvDiffEngine::OrvDiffEngine() = default;
OrvDiffEngine::~OrvDiffEngine() = default;
