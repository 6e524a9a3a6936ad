#pragma once

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "cli/system/CommandError.h"

/// Keeps the XML parser library ready for the engines that validate XML.
class XercesSession {
 public:
  XercesSession() {
    try {
      xercesc::XMLPlatformUtils::Initialize();
    } catch (const xercesc::XMLException&) {
      throw CommandError("the XML parser library could not be started");
    }
  }
  ~XercesSession() { xercesc::XMLPlatformUtils::Terminate(); }
  XercesSession(const XercesSession&) = delete;
  XercesSession& operator=(const XercesSession&) = delete;
};
