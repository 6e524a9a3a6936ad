// A host's own classes by the names of our stand-ins and services, with the same operations but
// other contents. Includes nothing of the library.

#include <list>
#include <string>

static int s_calls = 0;

class VELThrowable {
 public:
  virtual ~VELThrowable();
  virtual void addBackTraceEntry(const std::string& unit, int line, const std::string& tag);
};
VELThrowable::~VELThrowable() = default;
void VELThrowable::addBackTraceEntry(const std::string&, int, const std::string&) {
  ++s_calls;
}

class VELAssertError : public VELThrowable {
 public:
  ~VELAssertError() override;
};
VELAssertError::~VELAssertError() = default;

struct OrvGlob {
  static void globFiles(const char* pattern, std::list<std::string>& files);
};
void OrvGlob::globFiles(const char*, std::list<std::string>&) {
  ++s_calls;
}

struct VELFmDir {
  static int exists(const char* path, unsigned short mode);
};
int VELFmDir::exists(const char*, unsigned short) {
  return ++s_calls;
}

bool raisesErrorOfHost(void (*action)()) {
  try {
    action();
  } catch (const VELThrowable&) {
    return true;
  } catch (...) {
  }
  return false;
}

void raiseErrorOfHost() {
  throw VELAssertError();
}

int callsOfHost() {
  return s_calls;
}
