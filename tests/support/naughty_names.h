#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <string>
#include <vector>

namespace torvane {

// A public list of texts that programs have tripped over, for names; empty where it is not there.
inline std::vector<std::string> naughtyNames() {
  std::vector<std::string> names;
  QFile file(TORVANE_VECTORS_DIR "/blns/blns.json");
  if (!file.open(QIODevice::ReadOnly)) return names;
  const QJsonArray list = QJsonDocument::fromJson(file.readAll()).array();
  for (const auto& name : list) names.push_back(name.toString().toStdString());
  return names;
}

}  // namespace torvane
