#pragma once

/// How far a number may be from the master's: the larger of both allowances counts. Without either,
/// values are compared as they are written.
struct Tolerance {
  double absolute = 0;  ///< in the unit of the number
  double relative = 0;  ///< of the master's number; 0.01 is one per cent

  bool isNone() const { return absolute == 0 && relative == 0; }
};
