#include "orvdiff/platform/OrvWholeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/platform/VELFmFile.h"

namespace {

enum class Outcome { NotOpened, NotWritten, Written };

Outcome writeInto(const std::string& name, int createMode, std::string_view bytes) {
  VELFmFile file;
  if (file.open(name.c_str(), createMode, 0) == 0) {
    return Outcome::NotOpened;
  }
  const bool written = file.write(bytes.data(), bytes.size()) == bytes.size();
  return file.close() && written ? Outcome::Written : Outcome::NotWritten;
}

/// One name per process and none that anybody else would choose: a process writes one file at a
/// time.
std::string nameBeside(const std::string& name) {
  return name + ".new-" + std::to_string(getpid());
}

}  // namespace

bool OrvWholeFile::write(const std::string& name, std::string_view bytes) {
  struct stat before = {};
  const bool exists = lstat(name.c_str(), &before) == 0;
  const bool isFile = exists && S_ISREG(before.st_mode);
  if (isFile && access(name.c_str(), W_OK) != 0) {
    return false;
  }
  if (exists && !isFile && !S_ISLNK(before.st_mode)) {
    return writeInto(name, VELFmFile::eCreateForWriting, bytes) != Outcome::NotOpened;
  }
  const std::string beside = nameBeside(name);
  unlink(beside.c_str());  // left by a process that was killed
  Outcome outcome = writeInto(beside, VELFmFile::eCreateNew, bytes);
  if (outcome == Outcome::NotOpened) {
    outcome = writeInto(name, VELFmFile::eCreateForWriting, bytes);
  } else {
    if (isFile) {
      chmod(beside.c_str(), before.st_mode & 07777);
    }
    if (outcome == Outcome::NotWritten || std::rename(beside.c_str(), name.c_str()) != 0) {
      unlink(beside.c_str());
      outcome = Outcome::NotWritten;
    }
  }
  if (outcome == Outcome::NotWritten) {
    VELFmDir::discardFile(name.c_str());
  }
  return outcome != Outcome::NotOpened;
}
