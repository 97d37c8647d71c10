// A chart of lines, as an SVG file.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace velk::bench {

// Reaches from one value to another: in steps, or without one in powers of ten.
struct Axis {
    std::string name;
    double low, high;
    double step = 0;

    double Share(double value) const {
        return step > 0 ? (value - low) / (high - low) : std::log(value / low) / std::log(high / low);
    }
    std::vector<double> Ticks() const {
        std::vector<double> ticks;
        for (double tick = low; tick <= high * 1.01; tick = step > 0 ? tick + step : tick * 10) ticks.push_back(tick);
        return ticks;
    }
};

class Chart {
  public:
    struct Point {
        double x;
        double y;
    };

    Chart(std::string title, Axis x, Axis y) : title_(std::move(title)), x_(std::move(x)), y_(std::move(y)) {}

    void Add(std::string name, std::vector<Point> points) { lines_.push_back({std::move(name), std::move(points)}); }

    bool Write(const char* path) const {
        std::FILE* const file = std::fopen(path, "wb");
        if (!file) return false;
        const std::string text = Text();
        const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        return std::fclose(file) == 0 && written;
    }

  private:
    struct Line {
        std::string name;
        std::vector<Point> points;
    };
    static constexpr double kLeft = 70, kTop = 50, kWidth = 560, kHeight = 340;
    static constexpr const char* kColours[] = {"#1f5fa8", "#c1440e", "#2e7d32", "#6a1b9a", "#777777", "#00838f"};

    double X(double value) const { return kLeft + kWidth * x_.Share(value); }
    double Y(double value) const { return kTop + kHeight * (1 - y_.Share(value)); }

    template <class... Values>
    static std::string Format(const char* format, Values... values) {
        char text[400];
        std::snprintf(text, sizeof(text), format, values...);
        return text;
    }

    static std::string Label(double x, double y, const char* anchor, const std::string& text) {
        return Format("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">%s</text>\n", x, y, anchor, text.c_str());
    }

    static std::string Rule(double x1, double y1, double x2, double y2) {
        return Format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#dddddd\"/>\n", x1, y1, x2, y2);
    }

    std::string Axes() const {
        std::string text;
        for (const double tick : x_.Ticks()) {
            text += Rule(X(tick), kTop, X(tick), kTop + kHeight);
            text += Label(X(tick), kTop + kHeight + 18, "middle", Format("%.8g", tick));
        }
        for (const double tick : y_.Ticks()) {
            text += Rule(kLeft, Y(tick), kLeft + kWidth, Y(tick));
            text += Label(kLeft - 8, Y(tick) + 4, "end", Format("%.8g", tick));
        }
        text += Label(kLeft + kWidth / 2, kTop + kHeight + 38, "middle", x_.name);
        return text + Label(8, kTop - 10, "start", y_.name);
    }

    std::string Drawn(const Line& line, std::size_t number) const {
        const char* const colour = kColours[number % std::size(kColours)];
        std::string path;
        for (const Point& point : line.points) path += Format("%.1f,%.1f ", X(point.x), Y(point.y));
        const double y = kTop + kHeight + 62 + 18.0 * static_cast<double>(number);
        return "<polyline fill=\"none\" stroke-width=\"2\" stroke=\"" + std::string(colour) + "\" points=\"" + path +
               "\"/>\n" +
               Format("<rect x=\"%.1f\" y=\"%.1f\" width=\"14\" height=\"4\" fill=\"%s\"/>\n", kLeft, y - 6, colour) +
               Label(kLeft + 22, y, "start", line.name);
    }

    std::string Text() const {
        const double height = kTop + kHeight + 70 + 18.0 * static_cast<double>(lines_.size());
        std::string text = Format(
                               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                               "font-family=\"sans-serif\" font-size=\"12\">\n",
                               kLeft + kWidth + 40, height) +
                           "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" +
                           Label(kLeft, 24, "start", "<tspan font-size=\"15\">" + title_ + "</tspan>") + Axes();
        for (std::size_t i = 0; i < lines_.size(); ++i) text += Drawn(lines_[i], i);
        return text + "</svg>\n";
    }

    std::string title_;
    Axis x_, y_;
    std::vector<Line> lines_;
};

}  // namespace velk::bench
