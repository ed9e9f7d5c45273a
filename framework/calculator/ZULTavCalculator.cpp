#include "framework/calculator/ZULTavCalculator.h"

#include <algorithm>
#include <deque>
#include <new>
#include <optional>
#include <unordered_set>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/calculator/detail/Parser.h"

using namespace zultav::detail;

namespace {

constexpr std::size_t kLargestSource = std::size_t{1} << 31;  // positions are 32 bits wide

std::string_view WithoutByteOrderMark(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\ufeff";
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
    text.remove_prefix(kByteOrderMark.size());
  return text;
}

/// One text, with those that it includes, on its way to a model.
class Reader {
 public:
  Reader(const Source& source, const std::vector<const ZULTaVoModule*>& modules,
         const ZULTavCalculator::Options& options, ErrorList& errors)
      : mSource(source),
        mBytes(source.GetText().size()),
        mOptions(options),
        mErrors(errors),
        mModel(std::make_unique<ZULTavModel>()),
        mRegistry(modules),
        mBuilder(*mModel, mRegistry, mNames, options.limits),
        mInterpreter(mBuilder, mRegistry, mNames, options.limits) {}

  std::unique_ptr<ZULTavModel> Read() {
    TakeDefinitions();
    TakeData();
    ReadStatements();
    if (mErrors.IsEmpty()) CheckDefinitions();
    return mErrors.IsEmpty() ? std::move(mModel) : nullptr;
  }

  void Warn(std::vector<ZULTavDiagnostic>& warnings) const {
    for (const auto& [place, warning] : mBuilder.GetWarnings()) {
      warnings.push_back(warning.source->Describe(warning));
      warnings.back().isWarning = true;
    }
    if (!mErrors.IsEmpty()) return;
    for (const ModelError& unused : mInterpreter.GetUnusedData()) {
      if (warnings.size() >= mOptions.limits.errors) return;
      warnings.push_back(unused.source->Describe(unused));
      warnings.back().isWarning = true;
    }
  }

 private:
  /// A text that is being read.
  struct Reading {
    const Source& source;
    std::string identity;  // empty: it cannot include any
    Parser parser;
  };
  /// One that was included.
  struct Included {
    std::string text;
    std::optional<Source> source;
  };

  std::size_t GetByteLimit() const { return std::min(mOptions.limits.sourceBytes, kLargestSource); }

  void TakeDefinitions() {
    for (const auto& [name, text] : mOptions.definitions) {
      const Source definition("definition of '" + name + "'", text);
      try {
        mInterpreter.Define(name, definition);
      } catch (const ModelError& error) {
        mErrors.Add(definition, error);
      }
    }
  }

  void TakeData() {
    for (const ZULTavCalculator::Options::Data& data : mOptions.data) {
      const Source& source = mData.emplace_back(data.name, WithoutByteOrderMark(data.text));
      try {
        if (source.GetText().size() > GetByteLimit())
          Fail({}, "the data are longer than the limit of " +
                       std::to_string(mOptions.limits.sourceBytes) + " bytes");
        mInterpreter.TakeData(source);
      } catch (const ModelError& error) {
        mErrors.Add(source, error);
        mInterpreter.MarkDataBroken();
      }
    }
  }

  void ReadStatements() {
    std::string identity;
    if (mOptions.includes != nullptr) identity = mOptions.includes->IdentityOf(mSource.GetName());
    mRead.insert(identity);
    Begin(mSource, std::move(identity));
    for (Syntax syntax; !mReading.empty() && !mErrors.IsFull();)
      ReadStatement(mReading.back(), syntax);
  }

  void Begin(const Source& source, std::string identity) {
    const Span all = {0, static_cast<std::uint32_t>(source.GetText().size())};
    mReading.push_back({source, std::move(identity),
                        Parser(source, all, mOptions.limits, mNames, [this](std::string_view name) {
                          return mRegistry.HasOperator(name);
                        })});
  }

  void ReadStatement(Reading& reading, Syntax& syntax) {
    const auto markBroken = [&] {
      for (const std::uint32_t name : reading.parser.GetDeclared()) mInterpreter.MarkBroken(name);
    };
    try {
      if (!reading.parser.Next(syntax)) return mReading.pop_back();
    } catch (const ModelError& error) {
      mErrors.Add(reading.source, error);
      markBroken();
      return reading.parser.Skip();
    }
    try {
      const Statement& statement = syntax.statements[0];
      if (statement.kind == Statement::Kind::kInclude) return Include(reading, statement.value);
      mInterpreter.Run(reading.source, syntax);
    } catch (const ModelError& error) {
      if (!error.message.empty()) mErrors.Add(reading.source, error);
      markBroken();
    }
  }

  /// What the text includes is read next, unless it was read before.
  void Include(const Reading& reading, Span span) {
    const std::string_view quoted = reading.source.GetText(span);
    const std::string name(quoted.substr(1, quoted.size() - 2));
    ZULTavIncludes* const includes = mOptions.includes;
    if (includes == nullptr) Fail(span, "no other texts can be included here");
    std::string found, reason;
    if (!includes->Find(name, reading.source.GetName(), found, reason))
      Fail(span, "cannot include this file: " + reason);
    std::string identity = includes->IdentityOf(found);
    CheckCircle(span, identity);
    if (!mRead.insert(identity).second) return;
    if (mReading.size() >= mOptions.limits.nesting)
      Fail(span, "files include each other deeper than the limit of " +
                     std::to_string(mOptions.limits.nesting) + " levels");
    Included& included = mIncluded.emplace_back();
    const std::size_t left = GetByteLimit() - mBytes;
    if (!includes->Read(found, left, included.text, reason))
      Fail(span, "cannot include this file: " + reason);
    if (included.text.size() > left)
      Fail(span, "with this file the texts are longer than the limit of " +
                     std::to_string(GetByteLimit()) + " bytes");
    mBytes += included.text.size();
    included.source.emplace(found, WithoutByteOrderMark(included.text),
                            static_cast<std::uint32_t>(mIncluded.size()));
    Begin(*included.source, std::move(identity));
  }

  /// Fails where the text with this identity is being read.
  void CheckCircle(Span span, const std::string& identity) const {
    const auto first = std::find_if(mReading.begin(), mReading.end(), [&](const Reading& reading) {
      return reading.identity == identity;
    });
    if (first == mReading.end()) return;
    constexpr std::ptrdiff_t kMostNames = 8;
    std::string chain = "'" + first->source.GetName() + "' includes ";
    for (auto at = first + 1; at != mReading.end(); ++at) {
      const std::ptrdiff_t place = at - first;
      if (place <= kMostNames)
        chain +=
            (place < kMostNames ? "'" + at->source.GetName() + "'" : "…") + ", which includes ";
    }
    Fail(span, "files include each other in a circle",
         {chain + "'" + first->source.GetName() + "'"});
  }

  void CheckDefinitions() {
    for (const std::string& name : mInterpreter.GetUnusedDefinitions())
      mErrors.Add(Source("definition of '" + name + "'", mOptions.definitions.at(name)),
                  {{}, "the model does not use '" + name + "'", mInterpreter.SuggestName(name)});
  }

  const Source& mSource;
  std::deque<Included> mIncluded;
  std::deque<Reading> mReading;           // each included by the one before it
  std::unordered_set<std::string> mRead;  // their identities
  std::size_t mBytes;                     // of all texts
  const ZULTavCalculator::Options& mOptions;
  ErrorList& mErrors;
  std::deque<Source> mData;
  std::unique_ptr<ZULTavModel> mModel;
  Registry mRegistry;
  NameTable mNames;
  ModelBuilder mBuilder;
  Interpreter mInterpreter;
};

}  // namespace

ZULTavCalculator::ZULTavCalculator(std::vector<const ZULTaVoModule*> modules)
    : mModules(std::move(modules)) {}

ZULTavCalculator::~ZULTavCalculator() = default;

std::unique_ptr<ZULTavModel> ZULTavCalculator::Read(std::string_view text,
                                                    std::string_view fileName,
                                                    const Options& options,
                                                    std::vector<ZULTavDiagnostic>& errors,
                                                    std::vector<ZULTavDiagnostic>* warnings) const {
  const std::size_t limit = std::min(options.limits.sourceBytes, kLargestSource);
  const auto refuse = [&](const std::string& message) {
    ZULTavDiagnostic diagnostic;
    diagnostic.message = message;
    diagnostic.file = fileName;
    errors.push_back(diagnostic);
  };
  try {
    try {
      text = WithoutByteOrderMark(text);
      if (text.size() <= limit) {
        const Source source(fileName, text);
        ErrorList list(errors, options.limits.errors);
        Reader reader(source, mModules, options, list);
        auto model = reader.Read();
        if (warnings != nullptr) reader.Warn(*warnings);
        return model;
      }
      refuse("the text of " + std::to_string(text.size()) + " bytes is longer than the limit of " +
             std::to_string(limit));
    } catch (const std::exception&) {  // std::bad_alloc, or a length that no container can have
      refuse("there is not enough memory for this model");
    }
  } catch (const std::exception&) {  // nor for saying so
  }
  return nullptr;
}
