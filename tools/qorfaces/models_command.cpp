#include "models_command.h"

#include "blank_picture.h"
#include "console.h"
#include "default_models.h"
#include "known_models.h"
#include "parse.h"
#include "picture_file.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <qorocv460/client.h>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace {

// By their numbers less one.
enum Number : std::size_t { caffeText, caffeWeights, graph, graphWeights, fitter, cascade, person };

struct Model {
  KnownModel known;
  std::string path;
  bool missing = false;
  bool isThereUnderPublicName = false; // where it is missing
  Origin origin = Origin::another;
  std::string damage; // what the library says of it; empty: nothing
  bool tried = true;  // false where that takes another model that is not good
  bool usable() const { return !missing && tried && damage.empty(); }
};

using Models = std::vector<Model>;

Models modelsIn(const std::string& directory) {
  // With the system's separator at its end: what is complained of begins so as well.
  const std::string prefix = (std::filesystem::u8path(directory) / "").u8string();
  int missing = qorocv::client::placeModels(prefix);
  std::error_code ignored; // what cannot be looked at is not there
  Models models;
  for (KnownModel& known : knownModels()) {
    Model model;
    model.path = prefix + known.shortName;
    model.known = std::move(known);
    model.missing = missing % 10 != 0;
    missing /= 10;
    if (model.missing) {
      model.isThereUnderPublicName = std::filesystem::exists(
          std::filesystem::u8path(prefix + model.known.publicName), ignored);
    } else {
      const std::vector<unsigned char> content = readFile(model.path);
      model.origin =
          originOf(model.known, {reinterpret_cast<const char*>(content.data()), content.size()});
    }
    models.push_back(std::move(model));
  }
  return models;
}

// ---- Trials: what the library says when it uses a model. Every trial takes a slot of its own.

/// The variables of a call, large enough for every function that is called here.
struct Answer {
  std::vector<double> results = std::vector<double>(QOROCV460_HEAD_CENTRE_RESULTS);
  int count = QOROCV460_HEAD_CENTRE_RESULTS;
  int width = 0;
  int height = 0;
  std::vector<unsigned char> view = std::vector<unsigned char>(QOROCV460_VIEW_BYTES);
  std::vector<unsigned char> mask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  std::vector<unsigned char> cropMask = std::vector<unsigned char>(QOROCV460_MASK_BYTES);
  std::array<double, QOROCV460_CROP_BOX> cropBox{};
};

/// What a call throws, without the line's end; empty where it throws nothing.
std::string complaintOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::exception& exception) {
    const std::string text = exception.what();
    return text.empty() ? "it cannot be used" : text.substr(0, text.find_last_not_of('\n') + 1);
  }
  return {};
}

std::string tryNetwork(const std::string& photo, int modelKind, int slot) {
  return complaintOf([&] {
    Answer answer;
    findQORFacesDUNInTread02(photo.c_str(), answer.results.data(), &answer.count, modelKind, slot,
                             0, &answer.width, &answer.height);
  });
}

/// Of what takes the landmarks, too, and goes on without them when it is called once more: nothing
/// is fitted to a picture without a face.
std::string complaintWithoutLandmarks(const std::function<void()>& call) {
  complaintOf(call);
  return complaintOf(call);
}

std::string tryCascade(const std::string& photo, int slot) {
  return complaintWithoutLandmarks([&] {
    Answer answer;
    findQORFacesInTread01(photo.c_str(), answer.results.data(), &answer.count, slot, 0,
                          &answer.width, &answer.height);
  });
}

std::string tryPersonWithCascade(const std::string& photo, int slot) {
  return complaintWithoutLandmarks([&] {
    Answer answer;
    findQORFacesHAARInTreadWithMask02(photo.c_str(), answer.results.data(), &answer.count, 0, slot,
                                      0, 0, &answer.width, &answer.height, answer.view.data(),
                                      answer.mask.data(), answer.cropMask.data(),
                                      answer.cropBox.data());
  });
}

bool tells(const std::string& complaint, const Model& model) {
  return complaint.find(model.path) != std::string::npos;
}

/// Of two files that are read together the one that the complaint names is damaged, else the one
/// that is not known to be good; or both.
void tryPair(Model& text, Model& weights, const std::string& photo, int modelKind, int slot) {
  if (text.missing || weights.missing) {
    text.tried = weights.tried = false;
    return;
  }
  const std::string complaint = tryNetwork(photo, modelKind, slot);
  if (complaint.empty()) {
    return;
  }
  const bool oneIsNamed = tells(complaint, text) != tells(complaint, weights);
  for (Model* const model : {&text, &weights}) {
    const bool suspected = oneIsNamed ? tells(complaint, *model) : model->origin == Origin::another;
    if (suspected) {
      model->damage = complaint;
    }
  }
  if (text.damage.empty() && weights.damage.empty()) { // no fault of the files, as far as we know
    text.damage = weights.damage = complaint;
  }
}

void tryAll(Models& models, const std::string& photo) {
  tryPair(models[caffeText], models[caffeWeights], photo, QOROCV460_CAFFE, 5);
  tryPair(models[graph], models[graphWeights], photo, QOROCV460_TENSORFLOW, 6);
  // Slots 1 to 4 load the cascade before the landmarks, the shared pair behind them.
  if (!models[cascade].missing) {
    models[cascade].damage = tryCascade(photo, 1);
  }
  if (!models[fitter].missing) {
    const std::string complaint = complaintOf([] { initDetector(); });
    if (complaint != models[cascade].damage) {
      models[fitter].damage = complaint;
    }
  }
  if (!models[person].missing) {
    models[person].tried = models[cascade].usable();
    if (models[person].tried) {
      models[person].damage = tryPersonWithCascade(photo, 2);
    }
  }
}

// ---- What is said

std::string stateOf(const Model& model) {
  if (model.missing) {
    return model.isThereUnderPublicName
               ? "missing; " + model.known.publicName + " is there: it has to be named " +
                     model.known.shortName
               : "missing";
  }
  if (!model.damage.empty()) {
    return "damaged: " + model.damage;
  }
  switch (model.origin) {
  case Origin::embedded:
    return "good: the embedded one";
  case Origin::published:
    return "good: the published one";
  case Origin::embeddedAndPublished:
    return "good: the embedded and published one";
  case Origin::another:
    break;
  }
  return model.tried ? "another file than the published one; it can be used"
                     : "another file than the published one; trying it takes a model that is not "
                       "good";
}

std::string inColumns(const Models& models) {
  std::string lines;
  for (const Model& model : models) {
    std::string name = model.known.shortName;
    name.resize(20, ' ');
    lines += name + stateOf(model) + "\n";
  }
  return lines;
}

ExitCode lookAt(const std::string& directory) {
  Console console;
  Models models = modelsIn(directory);
  const BlankPicture blank;
  tryAll(models, blank.path());
  console.takeLibraryText();
  if (!console.print(inColumns(models))) {
    return someFailed;
  }
  for (const Model& model : models) {
    const bool good = !model.missing && model.damage.empty() && model.origin != Origin::another;
    if (!good && !model.usable()) {
      return modelsMissing;
    }
  }
  return allRead;
}

} // namespace

ExitCode modelsCommand(std::vector<std::string> words) {
  CLI::App app(
      "Says of each of the seven model files in DIR, under the names model01.prototxt to\n"
      "model07.onnx, whether it is good (the published or the embedded one, by its digest),\n"
      "another file that works, damaged or missing. Takes no network.",
      "qorfaces models");
  std::string directory = defaultModels();
  app.add_option("DIR", directory,
                 "The directory; without it the one that qorfaces takes by itself")
      ->check(nameError);
  app.footer("Exit codes: 0 all seven can be used; 2 the arguments are wrong; 3 a model is missing "
             "or\ncannot be used.");
  try {
    parse(app, std::move(words));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? allRead : badArguments;
  }
  std::error_code ignored;
  if (!std::filesystem::is_directory(std::filesystem::u8path(directory), ignored)) {
    std::fputs(("qorfaces: there is no directory " + directory + "\n").c_str(), stderr);
    return badArguments;
  }
  return lookAt(directory);
}

} // namespace qorfaces
