#include "app/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>

#include "app/check_command.h"
#include "app/configuration_file.h"
#include "app/help_command.h"
#include "app/init_command.h"
#include "app/run_command.h"
#include "app/runtime.h"
#include "app/serve_command.h"
#include "app/suggestion.h"
#include "site/protected_names.h"

#ifndef ZELTO_VERSION
#error "the build says which version this is"
#endif

namespace zelto {

namespace {

// Checks of an option's text: they answer what is wrong with it, or nothing.

// A number from 1 to `most`.
CLI::Validator check_number(unsigned most, unsigned right) {
  const auto check = [most, right](const std::string& text) -> std::string {
    unsigned number = 0;
    if (CLI::detail::lexical_cast(text, number) && text.front() != '-' && number >= 1 && number <= most) return {};
    return fmt::format("'{}' is not a number from 1 to {}; a right one is {}", text, most, right);
  };
  return {check, ""};
}

// The library would read the sign as part of the number, and names every unit that it knows.
std::string check_size(std::string& size) {
  std::string bytes = size;
  try {
    if (!size.starts_with('-') && CLI::AsSizeValue(false)(bytes).empty()) {
      size = bytes;
      return {};
    }
  } catch (const CLI::ValidationError&) {  // a unit that there is not
  }
  return "'" + size + "' is not a size; a right one is 16MiB";
}

// What the library says, in full sentences for a word that it does not know.
std::string failure_message(const CLI::App* app, const CLI::Error& error) {
  const CLI::App* const command = app->get_subcommands().empty() ? app : app->get_subcommands().front();
  const std::vector<std::string> unknown = command->remaining();
  std::string says = error.what();
  std::vector<std::string> known;
  if (!unknown.empty() && unknown.front().starts_with('-')) {
    for (const CLI::Option* option : command->get_options())
      for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    says = "there is no option '" + unknown.front() + "'";
  } else if (!unknown.empty() && command == app) {
    for (const CLI::App* one : app->get_subcommands(nullptr)) known.push_back(one->get_name());
    says = "there is no command '" + unknown.front() + "'";
  } else if (!unknown.empty()) {
    says = "there is no use for '" + unknown.front() + "'";
  }
  // "--workers: 1 required NUMBER missing"
  constexpr std::string_view kRequired = ": 1 required ";
  constexpr std::string_view kMissing = " missing";
  if (const std::size_t at = says.find(kRequired); at != std::string::npos && says.ends_with(kMissing)) {
    says.resize(says.size() - kMissing.size());
    says.replace(at, kRequired.size(), " takes ");
  }
  // "--site: At Most 1 required but received 2"
  if (const std::size_t end = says.find(": At Most 1 required"); end != std::string::npos)
    says = says.substr(0, end) + " is given more than once";
  if (const std::size_t end = says.find(" was given a disallowed flag override"); end != std::string::npos)
    says = "--" + says.substr(0, end) + " takes no value";
  const std::string meant = known.empty() ? std::string() : suggestion(known, unknown.front());
  if (!meant.empty()) says += "; " + meant;
  const std::string help = "zelto " + (command == app ? std::string() : command->get_name() + " ") + "--help";
  return "zelto: " + says + " (" + help + " tells what there is)\n";
}

std::string indented(const std::string& lines) {
  std::string text = "  ";
  for (const char c : lines) (text += c) += c == '\n' ? "  " : "";
  return text;
}

void add_serve(CLI::App& app, ServeCommand& command) {
  CLI::App* serve = app.add_subcommand("serve", "Serve the pages and files of a folder");
  serve->add_option("SITE", command.site, "The folder, by default this one")->type_name("");
  serve
      ->add_option("--listen", command.listen,
                   "Where, by default 127.0.0.1:8080; a port alone is of this machine only, :8080 of every address")
      ->type_name("ADDRESS:PORT");
  serve->add_option("--workers", command.workers, "How many pages run at the same time, by default two a core")
      ->check(check_number(1024, 4))
      ->type_name("NUMBER");
  serve->add_option("--body-limit", command.body_limit, "The largest request body, as in 256MiB, by default 16MiB")
      ->transform(CLI::Validator(check_size, ""))
      ->type_name("SIZE");
  serve->add_flag("--debug", command.debug, "Let error pages show what went wrong");
  serve->add_flag("--no-supervisor", command.no_supervisor, "Serve in this process: for debuggers");
  serve->footer(
      "The folder's zelto.toml may say, each with its default or an example:\n" + ConfigurationFile::help() +
      "At SIGHUP it is read again, and the log's file opened anew. What it says then holds for requests and\n"
      "sessions that begin, body_limit and trusted_proxies for connections; listen, workers and session_node\n"
      "take a restart. A file that is wrong changes nothing. SIGTERM and SIGINT end the host once every\n"
      "request is answered, other signals do nothing.\n\n"
      "Never served, in any letter case, beside names that begin with a dot (other than /.well-known/) or\n"
      "an underscore, or end with a tilde:\n" +
      indented(ProtectedNames().list(96)));
}

void add_run(CLI::App& app, RunCommand& command) {
  CLI::App* run = app.add_subcommand("run", "Run one page and print its response");
  run->add_option("PAGE", command.page, "The page's file")->required()->type_name("");
  run->add_option("--site", command.site, "The site's folder, by default the page's")->type_name("FOLDER");
  run->add_option("--query", command.query, "The query string, as in a=1&b=2")->type_name("TEXT");
  run->add_option("--method", command.method, "By default GET, with a body POST")->type_name("NAME");
  run->add_option("--header", command.headers, "A request header; may be repeated")
      ->allow_extra_args(false)
      ->type_name("'NAME: VALUE'");
  run->add_option("--body", command.body_file, "A file with the request's body; - is standard input")
      ->type_name("FILE");
  run->add_flag("--include-headers", command.include_headers, "Print the response's head as well");
  run->add_option("--times", command.times, "Ask for it so often, as one server; the last answer is printed")
      ->check(check_number(1'000'000'000, 1000))
      ->type_name("NUMBER");
  run->add_flag("--debug", command.debug, "Let error pages show what went wrong");
  run->footer("What the site's zelto.toml says of pages holds here too; its log is standard error.\n");
}

void add_check(CLI::App& app, CheckCommand& command) {
  CLI::App* check = app.add_subcommand("check", "Say what is wrong with the pages and templates of a site");
  check->add_option("SITE", command.site, "The folder, by default this one")->type_name("");
  check->add_flag("--json", command.json, "Print one JSON object, for programs");
  check->add_flag("--strict", command.strict, "Fail for warnings as well");
  check->footer(
      "Nothing is run. One line for each thing found, FILE:LINE:COLUMN: error: TEXT, or warning.\n"
      "Exit code: 0 nothing or warnings, 1 errors, 2 wrong use.");
}

void add_help(CLI::App& app, HelpCommand& command) {
  CLI::App* help = app.add_subcommand("help", "Say what the documents tell of a member, mark, event, key or topic");
  // "--workers" is asked about, and not given.
  help->allow_extras()->callback([help, &command] {
    for (const std::string& word : help->remaining()) {
      if (word != "--") command.names.push_back(word);
    }
  });
  help->add_option("NAME", command.names, "As in Response.Write, '(#*#)', OnCommand_Save, body_limit, uploads")
      ->type_name("");
}

void add_init(CLI::App& app, InitCommand& command) {
  CLI::App* init = app.add_subcommand("init", "Begin a new site: a page, its template, a database, tests");
  init->add_option("FOLDER", command.folder, "Where: a new folder, or an empty one")->required()->type_name("");
}

void add_library(CLI::App& app, const char* name, const char* purpose, std::string& library) {
  CLI::App* command = app.add_subcommand(name, purpose);
  command->add_option("LIBRARY", library, "Its shared object")->required()->type_name("");
  command->footer(
      "Registrations are kept in the file that ZELTO_REGISTRY names, by default zelto/registry.json in the\n"
      "user's data folder: $XDG_DATA_HOME, or ~/.local/share. The libmirt.so beside this program needs none.");
}

// The library would take "--debug=5" for yes.
void refuse_values_of_switches(CLI::App& app) {
  for (CLI::Option* option : app.get_options())
    if (option->get_expected_max() == 0) option->disable_flag_override();
  for (CLI::App* command : app.get_subcommands({})) refuse_values_of_switches(*command);
}

int dispatch(const CLI::App& app, const ServeCommand& serve, const RunCommand& run, const InitCommand& init,
             const CheckCommand& check, const HelpCommand& help, const std::string& library) {
  if (app.got_subcommand("serve")) return serve_site(serve);
  if (app.got_subcommand("run")) return run_page_file(run);
  if (app.got_subcommand("init")) return init_site(init);
  if (app.got_subcommand("check")) return check_site(check);
  if (app.got_subcommand("help")) return print_help(help);
  if (app.got_subcommand("register")) return register_library(library);
  return unregister_library(library);
}

}  // namespace

int run_command_line(int argc, const char* const* argv) {
  CLI::App app("Zelto serves pages written in JavaScript and VBScript.", "zelto");
  app.set_version_flag("--version", "zelto " ZELTO_VERSION);
  app.require_subcommand(1);
  app.footer(
      "serve [SITE] [--listen ADDRESS:PORT] [--workers NUMBER] [--body-limit SIZE]\n"
      "      [--debug] [--no-supervisor]\n"
      "run PAGE [--site FOLDER] [--query TEXT] [--method NAME] [--debug]\n"
      "      [--header 'NAME: VALUE']… [--body FILE] [--include-headers] [--times NUMBER]\n"
      "init FOLDER; check [SITE] [--json] [--strict]; help [NAME]\n"
      "zelto SUBCOMMAND --help tells more; that of serve lists the keys of zelto.toml.\n"
      "Exit code: 0 done, 1 failed (of run: also a status from 400), 2 wrong use or\n"
      "zelto.toml, 3 serve has ended and something that its pages made was left over.");
  app.failure_message(failure_message);
  ServeCommand serve;
  RunCommand run;
  InitCommand init;
  CheckCommand check;
  HelpCommand help;
  std::string library;
  add_serve(app, serve);
  add_run(app, run);
  add_init(app, init);
  add_check(app, check);
  add_help(app, help);
  add_library(app, "register", "Let pages create the classes of a component library", library);
  add_library(app, "unregister", "Take that back", library);
  refuse_values_of_switches(app);
  try {
    if (argc < 2) app.parse(std::vector<std::string>{"--help"});
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 && argc > 1 ? kSuccess : kWrongUse;
  }
  try {
    return dispatch(app, serve, run, init, check, help, library);
  } catch (const WrongUse& error) {
    std::cerr << "zelto: " << error.what() << "\n";
    return kWrongUse;
  } catch (const std::bad_alloc&) {
    std::cerr << "zelto: out of memory\n";
    return kFailure;
  } catch (const std::exception& error) {
    std::cerr << "zelto: " << error.what() << "\n";
    return kFailure;
  }
}

}  // namespace zelto
