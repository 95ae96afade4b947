#include <memory>

#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/Starter.h"

namespace quarl::ctl {

Command AddInit(CLI::App& app) {
  CLI::App* init = app.add_subcommand("init", "Make a new store");
  auto starter = std::make_shared<bool>(false);
  init->add_flag("--starter", *starter,
                 "Begin with a default schedule, the bundled plug-in types and this machine as first server");
  init->footer(
      "Refuses when something exists in the store's place. A failed init leaves no file.\n"
      "\n"
      "Examples:\n"
      "  quarlctl init\n"
      "  quarlctl --store sqlite:/srv/quarl.db init --starter");
  return {init, [starter](Session& session) {
            NewStore store(session.store);
            if (*starter) FillStarter(store.Stores(), session.store.Paths(), session.store.TheClock());
            store.Keep();
            session.terminal.PrintLine(QStringLiteral("Made the store %1.").arg(store.Path()));
          }};
}

}  // namespace quarl::ctl
