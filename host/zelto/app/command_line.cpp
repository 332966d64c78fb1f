#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "app/commands.h"

#ifndef ZELTO_VERSION
#error "the build says which version this is"
#endif

namespace zelto {

namespace {

void add_serve(CLI::App& app, ServeCommand& command) {
  CLI::App* serve = app.add_subcommand("serve", "Serve the pages and files of a folder");
  serve->add_option("SITE", command.site, "The folder")->capture_default_str();
  serve->add_option("--listen", command.listen, "ADDRESS:PORT, by default 127.0.0.1:8080");
  serve->add_option("--workers", command.workers, "How many pages run at the same time")->check(CLI::Range(1u, 1024u));
  serve->add_option("--body-limit", command.body_limit, "The largest request body, as in 256MiB, by default 16MiB")
      ->transform(CLI::AsSizeValue(false));
  serve->add_flag("--debug", command.debug, "Let error pages show what went wrong");
}

void add_run(CLI::App& app, RunCommand& command) {
  CLI::App* run = app.add_subcommand("run", "Run one page and print its response");
  run->add_option("PAGE", command.page, "The page's file")->required();
  run->add_option("--site", command.site, "The site's folder, by default the page's");
  run->add_option("--query", command.query, "The query string, as in a=1&b=2");
  run->add_option("--method", command.method, "By default GET, with a body POST");
  run->add_option("--header", command.headers, "A request header, 'Name: value'; may be repeated");
  run->add_option("--body", command.body_file, "A file with the request's body; - is standard input");
  run->add_flag("--include-headers", command.include_headers, "Print the response's head as well");
  run->add_flag("--debug", command.debug, "Let error pages show what went wrong");
}

int dispatch(const CLI::App& app, const ServeCommand& serve, const RunCommand& run, const std::string& library) {
  if (app.got_subcommand("serve")) return serve_site(serve);
  if (app.got_subcommand("run")) return run_page_file(run);
  if (app.got_subcommand("register")) return register_library(library);
  return unregister_library(library);
}

}  // namespace

int run_command_line(int argc, const char* const* argv) {
  CLI::App app("Zelto serves pages written in JavaScript.", "zelto");
  app.set_version_flag("--version", "zelto " ZELTO_VERSION);
  app.require_subcommand(1);
  ServeCommand serve;
  RunCommand run;
  std::string library;
  add_serve(app, serve);
  add_run(app, run);
  app.add_subcommand("register", "Let pages create the classes of a component library")
      ->add_option("LIBRARY", library)
      ->required();
  app.add_subcommand("unregister", "Take that back")->add_option("LIBRARY", library)->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kSuccess : kWrongUse;
  }
  try {
    return dispatch(app, serve, run, library);
  } catch (const std::exception& error) {
    std::cerr << "zelto: " << error.what() << "\n";
    return kFailure;
  }
}

}  // namespace zelto
