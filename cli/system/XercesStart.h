#pragma once

/// Has Xerces initialised by the first document that an engine validates, and makes a failure
/// inside Xerces end the process with a status of ours.
///
/// Nothing terminates Xerces again. That would release only what the end of the process releases
/// anyway, and its clean-up allocates: out of memory there, it would abort the program after the
/// verdict.
void startXercesOnDemand();
