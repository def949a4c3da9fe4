// The name of a JSON document, for headers that only let one through: the whole type takes longer to compile
// than all the rest of a header. Who makes a document or looks into one includes <nlohmann/json.hpp>, or
// Socle/LectureJSON.hpp, which brings it.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace tarnavelle {

using Json = nlohmann::json;

}  // namespace tarnavelle
