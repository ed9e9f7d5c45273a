#include "solve/CommandLine.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <iostream>
#include <iterator>
#include <string_view>
#include <vector>

namespace {

constexpr char kAbout[] =
    "Solves constraint models over integers, booleans and reals by interval propagation and\n"
    "bisection. Every solution lies in what is printed.";

constexpr char kFooter[] = R"(Begin with
  zultav solve examples/send_more_money.zul
  zultav solve --help

Exit status: 0 answered (unsatisfiable is an answer), 2 usage, 3 error in the model,
             4 a limit ended the search, 5 internal error.)";

constexpr char kSolveFooter[] = R"(A model declares variables and states what holds between them:

  let total = 15;
  x, y : int = [1, 9];
  x + y = total;
  x < y;

Examples
  zultav solve model.zul                  the first solution
  zultav solve model.zul -a -s            all solutions, and what they cost
  zultav solve model.zul -n 3 -D total=12 three solutions with another constant
  zultav solve model.zul --propagate-only what propagation alone finds out
  zultav solve - -t 10 --format json      a model from standard input, ten seconds, JSON
  zultav solve model.zul -a --checkpoint run.zck   a run that can be interrupted and resumed

A model that says `minimize cost;` or `maximize gain;` is searched for its best solution: each better
one is printed with its objective, and then bounds that certainly hold the optimum.

Each solution is printed as `name = value` lines, or as the model says by `show "text", x;`, and
ends with ----------. The last line is
  ==========               all solutions were printed, or the best one
  =====UNSATISFIABLE=====  there is none
  =====UNBOUNDED=====      solutions are better without end
  =====UNKNOWN=====        a limit ended the search (exit status 4)
and is missing when as many solutions as asked for were printed. A solution marked
"// possible" is a box that may hold a solution, but was not proven to. The bounds of reals are
rounded outward: what is printed encloses what was found. Warnings, on standard error and in
JSON, name what a model states and probably does not mean.)";

constexpr char kResumeFooter[] =
    R"(Goes on with a run that `zultav solve --checkpoint` or an earlier resume has saved. Prints the
solutions that remain: together with those printed before they are those of one run. The model
file is not read again. The checkpoint is kept up to date; while one run uses it, another is refused.

Examples
  zultav solve model.zul -a --checkpoint run.zck    interrupted by Ctrl-C, say
  zultav resume run.zck                             the rest of the solutions
  zultav resume run.zck -t 3600                     an hour's part of the rest)";

constexpr char kShowFooter[] = R"(Prints what was found, and how far the run came.

Examples
  zultav show run.zck
  zultav show run.zck --format json)";

constexpr char kCheckFooter[] = R"(Examples
  zultav check model.zul
  zultav check model.zul --format json)";

constexpr char kOperatorsFooter[] = R"(Examples
  zultav operators | grep '^sqrt '
  zultav operators --format json)";

constexpr char kRelationsFooter[] = R"(Examples
  zultav relations                    what models may call, and what it means
  zultav relations --format json)";

constexpr char kTypesFooter[] = R"(Examples
  zultav types
  zultav types --format json)";

/// A finite number that fills the whole text.
bool ReadNumber(std::string_view text, double& number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end && std::isfinite(number);
}

/// "A,B", or "A" alone where `second` has a default.
bool ReadPair(const std::string& text, double& first, double& second, bool secondNeeded) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) return !secondNeeded && ReadNumber(text, first);
  return ReadNumber(text.substr(0, comma), first) && ReadNumber(text.substr(comma + 1), second);
}

[[noreturn]] void Refuse(const std::string& option, const std::string& text,
                         const std::string& wanted) {
  throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
}

double ReadNumberOption(const std::string& option, const std::string& text,
                        const std::string& wanted, bool (*accepts)(double)) {
  double number = 0;
  if (!ReadNumber(text, number) || !accepts(number)) Refuse(option, text, wanted);
  return number;
}

bool IsPositive(double number) { return number > 0; }

// Fails; few enough to leave a wrong turn soon, enough to learn something on it.
constexpr std::uint64_t kRestartAfter = 250;

using VariableChoice = ZULTavSearch::VariableChoice;

constexpr std::pair<const char*, Format> kFormats[] = {
    {"text", Format::kText},
    {"json", Format::kJson}
};
constexpr std::pair<const char*, Format> kValueFormats[] = {
    {"text",   Format::kText  },
    {"json",   Format::kJson  },
    {"module", Format::kModule}
};
constexpr std::pair<const char*, Digits> kDigits[] = {
    {"precision", Digits::kPrecision},
    {"full",      Digits::kFull     }
};
constexpr std::pair<const char*, VariableChoice> kSelections[] = {
    {"adaptive",    VariableChoice::kAdaptive  },
    {"by-kind",     VariableChoice::kByKind    },
    {"first",       VariableChoice::kFirst     },
    {"largest",     VariableChoice::kLargest   },
    {"smallest",    VariableChoice::kSmallest  },
    {"round-robin", VariableChoice::kRoundRobin}
};
static_assert(std::size(kSelections) == ZULTavSearch::kVariableChoices);
constexpr std::pair<const char*, ZULTaVoAny::ValueSelection> kSplits[] = {
    {"lower",    ZULTaVoAny::kLowerHalf    },
    {"upper",    ZULTaVoAny::kUpperHalf    },
    {"least",    ZULTaVoAny::kLeastValue   },
    {"greatest", ZULTaVoAny::kGreatestValue}
};
static_assert(std::size(kSplits) == ZULTaVoAny::kValueSelections);

/// An option whose text is one of a few words.
template <class T, std::size_t kCount>
void AddChoice(CLI::App& app, const std::string& name, T& choice,
               const std::pair<const char*, T> (&words)[kCount], const std::string& about) {
  app.add_option_function<std::string>(
         name,
         [name, &words, &choice](const std::string& text) {
           std::string wanted = "one of";
           for (const auto& [word, value] : words) {
             if (text == word) {
               choice = value;
               return;
             }
             wanted += std::string(word == words[0].first ? " " : ", ") + word;
           }
           Refuse(name, text, wanted);
         },
         about)
      ->type_name("WORD");
}

/// One command line being read; fills `options`.
class Reader {
 public:
  Reader() : mApp(kAbout, "zultav") {
    mApp.require_subcommand(1);
    mApp.footer(kFooter);
    mApp.set_version_flag("--version", "zultav " ZULTAV_VERSION, "Print the version");
    mApp.set_help_flag("-h,--help", "Print this help");
    AddSolve();
    AddResume();
    AddOutput(AddCheckpointArgument(
        AddCommand(Command::kShow, "show", "Say what a checkpoint holds", kShowFooter)));
    AddModelArgument(AddFormat(
        AddCommand(Command::kCheck, "check", "Read a model and say what it holds", kCheckFooter)));
    AddFormat(AddCommand(Command::kOperators, "operators",
                         "List the operators that the modules registered", kOperatorsFooter));
    AddFormat(AddCommand(Command::kRelations, "relations",
                         "List the relations that the modules registered", kRelationsFooter));
    AddFormat(AddCommand(Command::kTypes, "types",
                         "List the value types that the modules registered", kTypesFooter));
  }

  CLI::App& App() { return mApp; }
  Options Result() const {
    Options options = mOptions;
    const bool all = options.search.limits.solutions == ZULTavSearch::kUnlimited;
    options.search.restartAfter = options.restarts.value_or(!all) ? kRestartAfter : 0;
    return options;
  }

 private:
  CLI::App& AddCommand(Command command, const char* name, const char* about, const char* footer) {
    CLI::App* app = mApp.add_subcommand(name, about);
    app->footer(footer);
    app->callback([this, command] { mOptions.command = command; });
    app->add_option_function<std::vector<std::string>>(
           "--module",
           [this](const std::vector<std::string>& modules) {
             mOptions.modules = modules;
             mOptions.moduleGiven = true;
           },
           "Open this module instead of ZULTavNumbers and\nZULTavRelations; may be repeated. It is "
           "looked for in\nZULTAV_MODULE_PATH and beside this program")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME");
    return *app;
  }

  CLI::App& AddFormat(CLI::App& app) {
    AddChoice(app, "--format", mOptions.format, kFormats, "Output format: text or json (text)");
    return app;
  }

  void AddModelArgument(CLI::App& app) {
    app.add_option("MODEL", mOptions.modelFile, "Model file; - is standard input")->required();
    app.add_option_function<std::vector<std::string>>(
           "-D,--define",
           [this](const std::vector<std::string>& texts) {
             for (const std::string& text : texts) Define(text);
           },
           "Set the constant `let NAME = …` of the model; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    app.add_option(
           "--include", mOptions.includeFolders,
           "Folder from which the model may include files, beside its own;\nmay be repeated")
        ->type_name("DIR")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false)
        ->check(NotEmpty());
    app.add_option("--data", mOptions.dataFiles,
                   "Values for constants of the model, a JSON object by name;\nmay be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false)
        ->check(NotEmpty());
    AddPrecision(app);
  }

  void Define(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == text.size())
      Refuse("-D", text, "of the form NAME=VALUE");
    mOptions.definitions[text.substr(0, equals)] = text.substr(equals + 1);
  }

  void AddPrecision(CLI::App& app) {
    app.add_option_function<std::string>(
           "-p,--precision",
           [this](const std::string& text) {
             mOptions.precision =
                 ReadNumberOption("--precision", text, "a positive number", IsPositive);
           },
           "Tolerance of reals, and the last decimal place printed (1e-6)")
        ->type_name("P");
    app.add_option_function<std::string>(
           "--trig-limits",
           [this](const std::string& text) {
             double low = 0, high = 0;
             if (!ReadPair(text, low, high, true) || !(low < high))
               Refuse("--trig-limits", text, "of the form LOW,HIGH with LOW < HIGH");
             mOptions.trigLimits = {low, high};
           },
           "Window in which inverse trigonometric functions narrow\n(-1e14,1e14); write "
           "--trig-limits=LOW,HIGH where LOW is\nnegative")
        ->type_name("LOW,HIGH");
  }

  void AddSolve() {
    CLI::App& app = AddCommand(Command::kSolve, "solve", "Find solutions of a model", kSolveFooter);
    AddModelArgument(app);
    AddSolutions(app);
    AddObjective(app);
    AddStrategy(app);
    AddLimits(app);
    AddOutput(app);
    app.add_option("--checkpoint", mOptions.checkpointFile,
                   "Save the run in this file, every now and then and when it is\ninterrupted; "
                   "`zultav resume FILE` goes on with it")
        ->type_name("FILE")
        ->check(NotEmpty())
        ->excludes("--propagate-only");
    app.add_flag("--force", mOptions.force,
                 "Give up an unfinished run that the checkpoint holds; without it\nonly an absent "
                 "file or a finished run is replaced")
        ->needs("--checkpoint");
    AddEvery(app);
  }

  void AddResume() {
    CLI::App& app = AddCheckpointArgument(
        AddCommand(Command::kResume, "resume", "Go on with a saved run", kResumeFooter));
    AddSolutionCount(app, "as many as the run still wants");
    AddLimits(app);
    AddOutput(app);
    AddEvery(app);
  }

  CLI::App& AddCheckpointArgument(CLI::App& app) {
    app.add_option("FILE", mOptions.checkpointFile, "Checkpoint file")
        ->required()
        ->check(NotEmpty());
    return app;
  }

  void AddOutput(CLI::App& app) {
    AddChoice(
        app, "--format", mOptions.format, kValueFormats,
        "Output format: text, json, or module, which is text with\nvalues as the module prints "
        "them, rounded to nearest (text)");
    app.add_flag("-s,--stats", mOptions.statistics, "Print statistics (JSON has them always)");
    AddChoice(
        app, "--digits", mOptions.digits, kDigits,
        "Digits of printed reals: precision, bounds being rounded outward\nto it, or full, bounds "
        "being the shortest decimals that read back\nexactly (precision)");
  }

  void AddEvery(CLI::App& app) {
    app.add_option_function<std::string>(
           "--every",
           [this](const std::string& text) {
             mOptions.savePeriod =
                 ReadNumberOption("--every", text, "a positive number of seconds", IsPositive);
           },
           "Time between two savings of the run (60)")
        ->type_name("SECONDS");
  }

  void AddSolutions(CLI::App& app) {
    const auto [count, all] = AddSolutionCount(app, "1");
    app.add_flag("--propagate-only", mOptions.propagateOnly,
                 "Only propagate, and print what the variables may still be")
        ->excludes(count)
        ->excludes(all);
  }

  std::pair<CLI::Option*, CLI::Option*> AddSolutionCount(CLI::App& app,
                                                         const std::string& usually) {
    const auto want = [this](std::uint64_t solutions) {
      mOptions.search.limits.solutions = solutions;
      mOptions.solutionsGiven = true;
    };
    auto* count = app.add_option_function<std::uint64_t>(
                         "-n,--solutions", want, "Stop after so many solutions (" + usually + ")")
                      ->type_name("N")
                      ->check(AtLeastOne());
    auto* all = app.add_flag_callback(
        "-a,--all", [want] { want(ZULTavSearch::kUnlimited); }, "Find all solutions");
    count->excludes(all);
    return {count, all};
  }

  void AddObjective(CLI::App& app) {
    app.add_option_function<std::string>(
           "--gap",
           [this](const std::string& text) {
             auto& [absolute, relative] = mOptions.objective.gap.emplace(0.0, 0.0);
             if (!ReadPair(text, absolute, relative, false) || absolute < 0 || relative < 0)
               Refuse("--gap", text, "of the form ABS or ABS,REL with numbers from 0");
           },
           "An optimum is known when no solution is better than the best one\nby more than ABS, or "
           "REL "
           "times its magnitude (of integers 0,\nof reals 1e-6,1e-6)")
        ->type_name("ABS[,REL]");
    app.add_option_function<std::string>(
           "--objective-limit",
           [this](const std::string& text) {
             mOptions.objective.limit = ReadNumberOption("--objective-limit", text, "a number",
                                                         [](double) { return true; });
           },
           "Look for solutions only that are at least as good as this")
        ->type_name("V");
  }

  void AddStrategy(CLI::App& app) {
    AddChoice(
        app, "--select", mOptions.search.choice, kSelections,
        "Which variable is split: adaptive, by what the search has learnt;\nby-kind, integers as "
        "declared, then reals in turn; first, largest,\nsmallest or round-robin (adaptive)");
    AddChoice(app, "--split", mOptions.search.selection, kSplits,
              "What is tried first: lower or upper half, least or greatest\nvalue (lower)");
    app.add_option_function<std::string>(
           "--restarts",
           [this](const std::string& text) {
             if (text != "on" && text != "off") Refuse("--restarts", text, "one of on, off");
             mOptions.restarts = text == "on";
           },
           "Whether a search over integers and booleans that fails again and\nagain begins anew, "
           "with "
           "what it has learnt: on or off (on; off with -a)")
        ->type_name("WORD");
    app.add_option_function<std::string>(
           "--eps",
           [this](const std::string& text) {
             double& absolute = mOptions.search.absoluteWidth;
             double& relative = mOptions.search.relativeWidth;
             if (!ReadPair(text, absolute, relative, false) || absolute < 0 || relative < 0)
               Refuse("--eps", text, "of the form ABS or ABS,REL with numbers from 0");
           },
           "A real is narrow enough at width ABS, or REL times its\nmagnitude (the precision, "
           "1e-14)")
        ->type_name("ABS[,REL]");
    app.add_option_function<std::string>(
           "--ratio",
           [this](const std::string& text) {
             mOptions.ratio =
                 ReadNumberOption("--ratio", text, "a number from 0 up to, not including, 1",
                                  [](double ratio) { return ratio >= 0 && ratio < 1; });
           },
           "A real, or an integer of more than 65536 values, that loses less\nthan this share of "
           "its width is not propagated (0.01)")
        ->type_name("R");
  }

  void AddLimits(CLI::App& app) {
    app.add_option("--max-nodes", mOptions.search.limits.nodes, "Stop after so many nodes")
        ->type_name("N")
        ->check(AtLeastOne());
    app.add_option_function<std::string>(
           "-t,--timeout",
           [this](const std::string& text) {
             mOptions.search.limits.seconds =
                 ReadNumberOption("--timeout", text, "a positive number of seconds", IsPositive);
           },
           "Stop after so many seconds")
        ->type_name("SECONDS");
  }

  static CLI::Validator NotEmpty() {
    return CLI::Validator(
        [](const std::string& text) {
          return text.empty() ? std::string("the name is empty") : std::string();
        },
        "");
  }

  /// The library would accept "-1" for an unsigned number and wrap it round.
  static CLI::Validator AtLeastOne() {
    return CLI::Validator(
        [](const std::string& text) {
          std::uint64_t number = 0;
          const char* end = text.data() + text.size();
          const auto [stop, error] = std::from_chars(text.data(), end, number);
          return error == std::errc() && stop == end && number > 0
                     ? std::string()
                     : "'" + text + "' is not a whole number from 1";
        },
        "");
  }

  Options mOptions;
  CLI::App mApp;
};

}  // namespace

std::optional<Options> ReadCommandLine(int argc, char** argv, int& status) {
  Reader reader;
  try {
    reader.App().parse(argc, argv);
    return reader.Result();
  } catch (const CLI::Success& request) {  // help or version
    reader.App().exit(request);
    status = kAnswered;
  } catch (const CLI::ParseError& error) {
    const bool unknown = reader.App().get_subcommands().empty() && argc > 1 && argv[1][0] != '-';
    std::cerr << "zultav: "
              << (unknown ? "unknown command '" + std::string(argv[1]) + "'" : error.what())
              << "\nTry 'zultav --help'.\n";
    status = kUsage;
  }
  return std::nullopt;
}
