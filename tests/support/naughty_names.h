#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <string>
#include <vector>

#include "support/folders.h"

namespace torvane {

// A public list of texts that programs have tripped over, for names; empty where it is not there.
inline std::vector<std::string> naughtyNames() {
  std::vector<std::string> names;
  QFile file((vectorsFolder() / "blns/blns.json").c_str());
  if (!file.open(QIODevice::ReadOnly)) return names;
  const QJsonArray list = QJsonDocument::fromJson(file.readAll()).array();
  for (const auto& name : list) names.push_back(name.toString().toStdString());
  return names;
}

}  // namespace torvane
