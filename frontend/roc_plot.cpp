#include "roc_plot.h"

#include <fmt/format.h>

namespace korvenrg::frontend {
namespace {

constexpr double kSide = 300.0;  // of the square that holds the curve
constexpr double kLeft = 60.0;
constexpr double kTop = 40.0;
constexpr double kCell = 90.0;  // width of a cell of the classification
constexpr double kGridLeft = kLeft + kSide + 90.0;
constexpr double kGridTop = kTop + 60.0;
constexpr double kGridHeight = 60.0;

std::string Text(double x, double y, const std::string& text, const char* anchor = "middle")
{
    return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", x, y, anchor, text);
}

std::string Curve(const NumberTable& roc)
{
    std::string points;
    for (std::size_t r = 0; r < roc.rows; ++r) {
        points += fmt::format("{:.2f},{:.2f} ", kLeft + roc(r, 0) * kSide, kTop + (1.0 - roc(r, 1)) * kSide);
    }
    return fmt::format("<polyline points=\"{}\" fill=\"none\" stroke=\"#1f5fa8\" stroke-width=\"2\"/>\n",
                       points);
}

std::string Axes()
{
    std::string text = fmt::format(
        "<rect x=\"{0}\" y=\"{1}\" width=\"{2}\" height=\"{2}\" fill=\"none\" stroke=\"#444\"/>\n"
        "<line x1=\"{0}\" y1=\"{3}\" x2=\"{4}\" y2=\"{1}\" stroke=\"#999\" stroke-dasharray=\"4\"/>\n",
        kLeft,
        kTop,
        kSide,
        kTop + kSide,
        kLeft + kSide);
    for (const double tick : {0.0, 0.5, 1.0}) {
        text += Text(kLeft + tick * kSide, kTop + kSide + 18.0, fmt::format("{}", tick));
        text += Text(kLeft - 8.0, kTop + (1.0 - tick) * kSide + 4.0, fmt::format("{}", tick), "end");
    }
    text += Text(kLeft + kSide / 2.0, kTop + kSide + 38.0, "false-positive rate");
    return text + Text(kLeft, kTop - 22.0, "sensitivity");
}

/** Cells shaded by their share of all. */
std::string Classification(const NumberTable& table, double cut)
{
    std::string text = Text(kGridLeft + kCell, kGridTop - 36.0, fmt::format("predicted, cut at {:.6g}", cut));
    for (std::size_t c = 0; c < 2; ++c)
        text +=
            Text(kGridLeft + (static_cast<double>(c) + 0.5) * kCell, kGridTop - 12.0, fmt::format("{}", c));
    for (std::size_t r = 0; r < 2; ++r) {
        const double y = kGridTop + static_cast<double>(r) * kGridHeight;
        text += Text(kGridLeft - 10.0, y + kGridHeight / 2.0, fmt::format("observed {}", r), "end");
        for (std::size_t c = 0; c < 2; ++c) {
            const double x = kGridLeft + static_cast<double>(c) * kCell;
            text += fmt::format(
                "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"{}\" fill-opacity=\"{:.3f}\" "
                "stroke=\"#444\"/>\n",
                x,
                y,
                kCell,
                kGridHeight,
                r == c ? "#1f5fa8" : "#c0392b",
                0.6 * table(r, c) / table(2, 2));
            text += Text(x + kCell / 2.0, y + kGridHeight / 2.0 + 4.0, fmt::format("{:.6g}", table(r, c)));
        }
    }
    return text;
}

}  // namespace

std::string RocDrawing(const LogitFit& fit, const Options& options)
{
    const double width = kGridLeft + 2.0 * kCell + 20.0, height = kTop + kSide + 60.0;
    std::string text = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} {1}\" "
        "font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" "
        "fill=\"white\"/>\n",
        width,
        height);
    text +=
        Axes() + Curve(fit.roc) + Classification(fit.classification, options.logit.cut.value_or(kDefaultCut));
    text += Text(kLeft + kSide - 10.0, kTop + kSide - 12.0, fmt::format("area {:.4f}", fit.area), "end");
    return text + "</svg>\n";
}

}  // namespace korvenrg::frontend
