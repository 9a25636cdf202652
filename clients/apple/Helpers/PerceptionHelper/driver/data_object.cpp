#include "driver/data_object.h"

#include <utility>

namespace tavik {

ResponseDictionary dataObject(Findings findings, ResponseDictionary context) {
  ResponseDictionary data{
      {"level_used", rawValue(findings.levelUsed)},
      {"context", std::move(context)},
      {"image", nullptr},
      {"ax_tree", nullptr},
      {"caption", nullptr},
      {"cache_hit", false},
      {"ax_node_count", findings.ax.nodeCount},
      {"ax_text_chars", findings.ax.textChars},
      {"tcc_screen_recording", true},
      {"tcc_accessibility", findings.isTrusted},
      {"redaction_applied", findings.sensitiveBundleId.has_value() || findings.ax.redactionApplied},
  };
  if (findings.image) data["image"] = *findings.image;
  if (findings.ax.tree) data["ax_tree"] = *std::move(findings.ax.tree);
  if (findings.sensitiveBundleId) {
    data["sensitive_app_match"] = true;
    data["sensitive_bundle_id"] = *findings.sensitiveBundleId;
  }
  return data;
}

}  // namespace tavik
