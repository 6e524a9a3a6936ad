#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orvdiff/orvdiff_export.h"

class OrvDiffListener;

/// The outcome of comparing one master with one actual output. The class of the object is the
/// verdict.
///
/// Results are immutable. The comparison that creates one hands ownership to its caller; the
/// driver deletes it as soon as every listener was notified, so a listener copies what it keeps.
class ORVDIFF_API OrvDiffResult {
 public:
  virtual ~OrvDiffResult();
  OrvDiffResult(const OrvDiffResult&) = delete;
  OrvDiffResult& operator=(const OrvDiffResult&) = delete;

  /// Calls exactly one operation of `listener`: the `comparisonNotification` that takes the
  /// result's own class.
  virtual void notifyListener(OrvDiffListener& listener) const = 0;

  /// Whether the comparison found nothing wrong; but see `OrvDiffResultPassUpToNul`.
  virtual bool isPassed() const = 0;

  /// Path of the master, exactly as the comparison was given it.
  const std::string& getMasterName() const { return m_masterName; }
  /// Path of the actual output, exactly as the comparison was given it.
  const std::string& getActualName() const { return m_actualName; }

 protected:
  OrvDiffResult(const std::string& masterName, const std::string& actualName);

 private:
  const std::string m_masterName;
  const std::string m_actualName;
};

/// The output matches its master.
class ORVDIFF_API OrvDiffResultPass : public OrvDiffResult {
 public:
  OrvDiffResultPass(const std::string& masterName, const std::string& actualName);
  ~OrvDiffResultPass() override;
  void notifyListener(OrvDiffListener& listener) const override;
  bool isPassed() const override;
};

/// A pass of which one file contains a NUL byte: only the text before it was compared. Listeners
/// receive it as a pass like any other; to tell the difference, test for this class.
class ORVDIFF_API OrvDiffResultPassUpToNul : public OrvDiffResultPass {
 public:
  OrvDiffResultPassUpToNul(const std::string& masterName, const std::string& actualName,
                           const std::string& cutFile);
  ~OrvDiffResultPassUpToNul() override;

  /// Path of a file that was not compared to its end: the master name or the actual name.
  const std::string& getCutFile() const { return m_cutFile; }

 private:
  const std::string m_cutFile;
};

/// A failure that is neither a difference of contents nor a missing file: an XML document that is
/// not valid, a number outside its tolerance.
class ORVDIFF_API OrvDiffResultFail : public OrvDiffResult {
 public:
  OrvDiffResultFail(const std::string& masterName, const std::string& actualName);
  ~OrvDiffResultFail() override;
  void notifyListener(OrvDiffListener& listener) const override;
  bool isPassed() const override;
};

/// The contents differ.
class ORVDIFF_API OrvDiffResultFailDiff : public OrvDiffResultFail {
 public:
  OrvDiffResultFailDiff(const std::string& masterName, const std::string& actualName);
  ~OrvDiffResultFailDiff() override;
  void notifyListener(OrvDiffListener& listener) const override;
};

/// The contents differ after normalisation. Carries both normalised texts.
class ORVDIFF_API OrvDiffResultFailDiffNormalized : public OrvDiffResultFailDiff {
 public:
  /// Takes ownership of both texts: NUL-terminated arrays from `new char[]`, or null.
  /// `diffPosition` is the byte index at which they first differ.
  OrvDiffResultFailDiffNormalized(const std::string& masterName, const std::string& actualName,
                                  char* normalizedMaster, char* normalizedActual,
                                  std::uint64_t diffPosition);
  ~OrvDiffResultFailDiffNormalized() override;
  void notifyListener(OrvDiffListener& listener) const override;

  /// The master text after normalisation; may be null.
  const char* getNormalizedMaster() const { return m_normalizedMaster.get(); }
  /// The actual text after normalisation; may be null.
  const char* getNormalizedActual() const { return m_normalizedActual.get(); }
  /// Index of the first byte at which the normalised texts differ.
  std::uint64_t getDiffPosition() const { return m_diffPosition; }

 private:
  const std::unique_ptr<char[]> m_normalizedMaster;
  const std::unique_ptr<char[]> m_normalizedActual;
  const std::uint64_t m_diffPosition;
};

/// The master or the actual output does not exist or cannot be opened.
class ORVDIFF_API OrvDiffResultFailFileMissing : public OrvDiffResultFail {
 public:
  OrvDiffResultFailFileMissing(const std::string& masterName, const std::string& actualName,
                               const std::string& missingFile);
  ~OrvDiffResultFailFileMissing() override;
  void notifyListener(OrvDiffListener& listener) const override;

  /// Path of the missing file: the master name or the actual name.
  const std::string& getMissingFile() const { return m_missingFile; }

 private:
  const std::string m_missingFile;
};
