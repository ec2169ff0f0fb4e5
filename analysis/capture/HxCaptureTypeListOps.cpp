#include "analysis/capture/HxCaptureTypeListOps.h"

#include <memory>
#include <string>
#include <utility>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

namespace HxCaptureTypeListOps {

const HxDataCaptureType* find(const HxDataCaptureTypeVector& types, const HxToken& token) {
  return types.findDataCaptureByToken(token, nullptr);
}

HxBoolean addByToken(HxDataCaptureTypeVector& types, const HxToken& token, unsigned int level) {
  if (types.findDataCaptureByToken(token, nullptr) != nullptr) return true;
  std::unique_ptr<HxDataCaptureType> created(types.newDataCaptureByToken(token));
  if (!created) return false;
  if (created->type() != level) return false;
  // A copy of the new default object would be the same: the vector takes the object itself.
  types.pushBackOwned(std::move(created));
  return true;
}

HxBoolean isTokenOfLevel(const HxToken& token, unsigned int level) {
  HxDataCaptureTypeVector factory;
  std::unique_ptr<HxDataCaptureType> created(factory.newDataCaptureByToken(token));
  return created && created->type() == level;
}

HxBoolean removeByToken(HxDataCaptureTypeVector& types, const HxToken& token) {
  HxU32 index = 0;
  if (types.findDataCaptureByToken(token, &index) == nullptr) return false;
  return types.erase(index);
}

HxBoolean setDisableFlags(HxDataCaptureTypeVector& types, const HxToken& token,
                          const HxXmlVectorType<HxXmlBasicType<bool>>& flags) {
  HxU32 index = 0;
  if (types.findDataCaptureByToken(token, &index) == nullptr) return false;
  types[index].setDisableFlags(flags);
  return true;
}

void collectAvailable(HxDataCaptureTypeVector& available, unsigned int level) {
  HxDataCaptureTypeVector factory;
  for (const auto& entry : factory.creatorMap()) {
    std::unique_ptr<HxXmlObject> object(entry.second());
    const auto* type = dynamic_cast<const HxDataCaptureType*>(object.get());
    if (type != nullptr && type->type() == level) available.pushBack(*type);
  }
}

}  // namespace HxCaptureTypeListOps
