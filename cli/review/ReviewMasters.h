#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/baseline/Acceptance.h"
#include "cli/review/ReviewMaterial.h"

/// Writes masters for a review. All arguments must outlive the object.
class ReviewMasters {
 public:
  ReviewMasters(const ReviewMaterial& material, Baselines& baselines)
      : m_material(material),
        m_baselines(baselines),
        m_acceptance(baselines, &material.source(), &material.uses()) {}

  /// What would come of `accept`.
  ChangeReport check(const std::vector<std::size_t>& pairs) const;

  /// Makes the outputs of pairs their masters, as one entry of the journal.
  ChangeReport accept(const std::vector<std::size_t>& pairs);

  /// Takes back an entry of the journal. Returns why it cannot be; empty if it was.
  std::string undo(std::uint64_t entry);

 private:
  std::vector<const PairRecord*> recordsOf(const std::vector<std::size_t>& pairs) const;

  const ReviewMaterial& m_material;
  Baselines& m_baselines;
  Acceptance m_acceptance;
};

/// The first thing that a report says went wrong; empty if nothing did.
std::string problemOf(const ChangeReport& report);
