// HxInfoManifest: what hxinfo reads from a recording's manifest (BASE.json).

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/lib/HxInfo.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

std::string textOf(const nlohmann::json& value) { return value.is_string() ? value.get<std::string>() : std::string(); }

std::string hostName() {
  char name[256] = {};
  return ::gethostname(name, sizeof name - 1) == 0 ? std::string(name) : std::string();
}
}  // namespace

bool hxIsManifestPath(const std::string& path) {
  return path.size() > 5 && path.compare(path.size() - 5, 5, ".json") == 0;
}

bool hxReadInfoManifest(const std::string& path, HxInfoManifest& manifest, std::string& error) {
  using Json = nlohmann::json;
  std::error_code code;
  if (!fs::is_regular_file(path, code)) {
    error = fs::exists(path, code) ? "is not a regular file" : "does not exist";
    return false;
  }
  std::ifstream in(path, std::ios::binary);
  const Json json = Json::parse(in, nullptr, false);
  if (json.is_discarded() || !json.is_object() || json.value("format", Json()) != "hxrecord-manifest") {
    error = json.is_discarded() ? "is not valid JSON" : "is not a recording's manifest (format 'hxrecord-manifest')";
    return false;
  }
  manifest = HxInfoManifest();
  manifest.path = path;
  manifest.status = textOf(json.value("status", Json()));
  manifest.message = textOf(json.value("statusMessage", Json()));
  manifest.mode = textOf(json.value("mode", Json()));
  manifest.started = textOf(json.value("started", Json()));
  manifest.updated = textOf(json.value("updated", Json()));
  for (auto [key, name] : {std::pair<const char*, std::string*>{"model", &manifest.model},
                           {"capture", &manifest.capture},
                           {"writers", &manifest.writers}}) {
    const Json input = json.value(key, Json());
    if (input.is_object()) {
      const Json builtIn = input.value("builtIn", Json());
      *name = (builtIn.is_boolean() && builtIn.get<bool>() ? "built-in " : "") + textOf(input.value("name", Json()));
    }
  }
  const Json commandLine = json.value("commandLine", Json());
  if (commandLine.is_array()) {
    for (const Json& argument : commandLine) manifest.commandLine.push_back(textOf(argument));
  }
  const auto number = [&json](const char* key) {
    const Json value = json.value(key, Json());
    return value.is_number() ? value.get<double>() : 0.0;
  };
  manifest.sampleInterval = number("sampleInterval");
  manifest.duration = number("duration");
  manifest.samples = static_cast<std::uint64_t>(number("samples"));
  const fs::path folder = fs::path(path).parent_path();
  const Json files = json.value("files", Json());
  if (files.is_array()) {
    for (const Json& file : files) {
      if (!file.is_object() || !file.value("file", Json()).is_string()) continue;
      const Json samples = file.value("samples", Json());
      manifest.files.push_back({(folder / textOf(file["file"])).string(), textOf(file.value("format", Json())),
                                textOf(file.value("extension", Json())),
                                samples.is_number_unsigned() ? samples.get<std::uint64_t>() : 0});
    }
  }
  const Json columns = json.value("columns", Json());
  if (columns.is_array()) {
    for (const Json& column : columns) {
      if (!column.is_object()) continue;
      manifest.columns.push_back({textOf(column.value("label", Json())), textOf(column.value("unit", Json()))});
    }
  }
  // A recording whose process is gone from this host was interrupted, whatever it still says.
  const Json process = json.value("process", Json());
  if (manifest.status == "recording" && process.is_object() && process.value("pid", Json()).is_number_integer() &&
      textOf(process.value("host", Json())) == hostName()) {
    const auto pid = process["pid"].get<std::int64_t>();
    if (pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) {
      manifest.status = "interrupted";
      manifest.message = "the recording process (" + std::to_string(pid) +
                         ") is gone without having finished the recording; it was killed or crashed";
    }
  }
  return true;
}
