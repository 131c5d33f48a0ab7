#include "apps/krmodel/PreviewLook.h"

#include <cmath>

#include <QColor>
#include <QStringList>

namespace krmodel {

namespace {

constexpr char kTransparent[] = "transparent";
constexpr char kUsualBackground[] = "gradient";

std::string AllViewNames()
{
    std::string names;
    for (const View& view : kViews)
        names += std::string(names.empty() ? "" : ", ") + view.name;
    return names;
}

/// "30,-10": around the model to the right of its front, and above the ground.
std::optional<View> ParseAngles(const std::string& text)
{
    constexpr double kRound = 360, kUpright = 90;
    const QStringList angles = QString::fromStdString(text).split(QLatin1Char(','));
    if (angles.size() != 2)
        return std::nullopt;
    bool areNumbers[2] = {};
    const double azimuth = angles[0].toDouble(&areNumbers[0]), elevation = angles[1].toDouble(&areNumbers[1]);
    const bool isGood =
        areNumbers[0] && areNumbers[1] && std::abs(azimuth) <= kRound && std::abs(elevation) <= kUpright;
    return isGood ? std::make_optional(View{"angles", azimuth, elevation}) : std::nullopt;
}

std::optional<View> ParseView(const std::string& text)
{
    for (const View& view : kViews)
        if (text == view.name)
            return view;
    return ParseAngles(text);
}

std::string CheckView(const std::string& text)
{
    return ParseView(text) ? std::string()
                           : "'" + text + "' is not one of " + AllViewNames() +
                                 ", nor AZIMUTH,ELEVATION with at most 360 and 90 degrees to either side";
}

std::optional<Background> ParseBackground(const std::string& text)
{
    if (text == kUsualBackground)
        return Background();
    if (text == kTransparent) {
        Background transparent;
        transparent.isTransparent = true;
        return transparent;
    }
    const QColor colour(QString::fromStdString(text));
    if (!colour.isValid() || colour.alpha() != 255)
        return std::nullopt;
    return Background{Decoded(colour.rgb()), Decoded(colour.rgb()), false};
}

std::string CheckBackground(const std::string& text)
{
    return ParseBackground(text) ? std::string()
                                 : "'" + text + "' is no colour, as white or #f0f0f0, nor " + kTransparent +
                                       ", nor " + kUsualBackground;
}

} // namespace

Option AddView(CLI::App& verb, View& view)
{
    const auto take = [&view](const std::string& text) { view = ParseView(text).value_or(view); };
    return AddText(verb, "--view", take,
                   "where to look from: " + AllViewNames() +
                       "; or AZIMUTH,ELEVATION, degrees to the right of the front and above the ground")
        .Default(view.name)
        .Value("VIEW")
        .Check(CheckView);
}

Option AddBackground(CLI::App& verb, Background& background)
{
    const auto take = [&background](const std::string& text) {
        background = ParseBackground(text).value_or(background);
    };
    return AddText(verb, "--background", take,
                   "what is behind the model: a colour, as white or #f0f0f0; "
                   "transparent; or gradient, grey that becomes darker downwards")
        .Default(kUsualBackground)
        .Value("COLOUR")
        .Check(CheckBackground);
}

} // namespace krmodel
