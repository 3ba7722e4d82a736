// vek::log::ClientRequests: serves the requests of the log service's configuration clients.
#pragma once

#include "vek/base/no_copy.h"

namespace vek::log {

class Manager;
class ServedSettings;
class Telegram;

// Not thread-safe. Used on the server's thread.
class ClientRequests : public NoCopy {
  public:
    // Neither is owned.
    ClientRequests(Manager& usedManager, ServedSettings& usedConfigurator)
        : manager(usedManager), configurator(usedConfigurator) {}

    // Serves `request` and sends the reply on its connection; `request` is overwritten by the
    // reply. An unknown type is reported on std::cerr and answered. Throws UsageError for an
    // unknown level, and what sending throws: close the connection then, there was no reply.
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
