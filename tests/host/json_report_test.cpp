#include "host/json_report.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

EffectFace Face()
{
    EffectFace face;
    face.number = 106;
    face.name = "Air Brush";
    face.slug = "air-brush";
    face.helpId = 961;
    face.pictures = 1;
    Knob spray;
    spray.name = "Spray";
    spray.kind = ParamFloat;
    spray.standard = {FloatWord(0.5f), 0, ParamFloat};
    spray.max = 100.0f;
    spray.rect = {66, 0, 198, 30};
    face.knobs = {spray};
    face.presets = {{"Out Of Focus", {{FloatWord(0.395f), 0, ParamFloat}}}};
    return face;
}

TEST(ListJson, OneEffect_HasItsCounts)
{
    EXPECT_EQ(ListJson("Larkvee Kelmora", {Face()}), R"({
  "schema": 1,
  "library": "Larkvee Kelmora",
  "effects": [
    {
      "id": 106,
      "slug": "air-brush",
      "name": "Air Brush",
      "pictures": 1,
      "knobs": 1,
      "presets": 1
    }
  ]
}
)");
}

TEST(ListJson, NoEffect_HasAnEmptyList)
{
    EXPECT_EQ(ListJson("None", {}), "{\n  \"schema\": 1,\n  \"library\": \"None\",\n  \"effects\": []\n}\n");
}

TEST(DescribeJson, FloatKnob_HasItsScaleAndShortNumbers)
{
    EXPECT_EQ(DescribeJson(Face()), R"({
  "schema": 1,
  "id": 106,
  "slug": "air-brush",
  "name": "Air Brush",
  "helpId": 961,
  "pictures": 1,
  "knobs": [
    {
      "index": 0,
      "name": "Spray",
      "kind": "float",
      "default": 0.5,
      "min": 0.0,
      "max": 100.0,
      "hostFlag": 0,
      "angular": false,
      "choices": [],
      "rect": [
        66,
        0,
        198,
        30
      ]
    }
  ],
  "presets": [
    {
      "name": "Out Of Focus",
      "values": {
        "Spray": 0.395
      }
    }
  ]
}
)");
}

TEST(DescribeJson, OtherKinds_HaveValuesOfTheirOwnForm)
{
    EffectFace face = Face();
    Knob choice;
    choice.name = "Mode";
    choice.kind = ParamChoice;
    choice.choices = {"Left", "Right"};
    choice.standard = {1, 0, ParamChoice};
    Knob color = choice;
    color.kind = ParamColor;
    color.choices.clear();
    color.standard = {0x000080FFu, 0, ParamColor};
    Knob check = color;
    check.kind = ParamCheck;
    Knob point = color;
    point.kind = ParamPoint;
    point.standard = {FloatWord(0.1f), FloatWord(2.0f), ParamPoint};
    face.knobs = {choice, color, check, point};
    face.presets.clear();
    const std::string json = DescribeJson(face);
    EXPECT_NE(json.find(R"("default": "Right")"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("default": "#ff8000")"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("default": true)"), std::string::npos) << json;
    EXPECT_NE(json.find("\"default\": [\n        0.1,\n        2.0\n      ]"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("min": null)"), std::string::npos) << json;
}

TEST(ListJson, NameThatIsNoText_StillGivesJson)
{
    EXPECT_NE(ListJson("bad \xFF name", {}).find("bad \xEF\xBF\xBD name"), std::string::npos);
}

} // namespace
} // namespace kelmora::host
