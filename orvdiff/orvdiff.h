#pragma once

/// The whole public interface of orvdiff.
///
/// Threads: one thread of a process verifies. Registry, engines, listeners, comparison functions
/// and the pattern catalogue, which all text engines of a process share, take no locks; two engines
/// on two threads are a data race. To use several cores, verify in several processes. Two parts may
/// run on any thread: `OrvDiffFloatComparison`, and the checks of `MOXTestHarness`.

#include "orvdiff/bridges/OrvDiffExplanation.h"
#include "orvdiff/compare/OrvByteBuffer.h"
#include "orvdiff/compare/OrvDiffFloatComparison.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvDiffNormalizationPattern.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/compare/OrvOriginMap.h"
#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffDataEngines.h"
#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffScriptEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/formats/OrvDiffTextFileTypeEngine.h"
#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"
#include "orvdiff/formats/OrvXerces.h"
#include "orvdiff/harness/MOXTestHarness.h"
#include "orvdiff/logs/OrvDiffFileLog.h"
#include "orvdiff/logs/OrvDiffLogNormalized.h"
#include "orvdiff/logs/OrvDiffMoxLog.h"
#include "orvdiff/logs/OrvDiffStreamLog.h"
#include "orvdiff/platform/OrvOutputFormat.h"
#include "orvdiff/platform/OrvStrStream.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "orvdiff/platform/VELErrors.h"
#include "orvdiff/registry/OrvDiffEngine.h"
#include "orvdiff/registry/OrvDiffEngineRegistry.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"
