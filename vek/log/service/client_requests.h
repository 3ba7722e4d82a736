// vek::log::ClientRequests: does what a configuration client of the log service asks for.
#pragma once

#include "vek/base/no_copy.h"

namespace vek::log {

class Manager;
class ServedSettings;
class Telegram;

// For one thread, the server's.
class ClientRequests : public NoCopy {
  public:
    // Neither is owned.
    ClientRequests(Manager& usedManager, ServedSettings& usedConfigurator)
        : manager(usedManager), configurator(usedConfigurator) {}

    // Does what `request`, as it was received, asks for, and sends the reply on its connection,
    // building it in `request` itself. A type that isn't known is reported on std::cerr, and
    // answered too. Throws UsageError for a level that there isn't, and what sending throws: the
    // connection is to be closed then, and there was no reply.
    void serve(Telegram& request);

  private:
    struct Entry;

    void changeScope(Telegram& request);
    void changeDefaultScope(Telegram& request);
    void getDefaultScope(Telegram& request);
    void agentList(Telegram& request);
    void evidenceInfo(Telegram& request);
    void persistConfig(Telegram& request);

    static const Entry table[];

    Manager& manager;
    ServedSettings& configurator;
};

}  // namespace vek::log
