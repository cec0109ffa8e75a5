#pragma once

#include <QString>

namespace qel {
namespace main {
class Event;
}
namespace util {

// Whether lengths are shown in millimetres or in inches. Scene lengths are millimetres;
// measure() turns them into the shown system and unmeasure() back. Follows the setting
// "settings/metricsystem" (default metric).
class MeasureSystem
{
public:
    static constexpr double INCH_MILIMETER = 25.4;

    // Made on first use; reads the setting.
    static MeasureSystem* getInstance();

    bool isMetric() const { return m_Metric; }
    // Only stores; the setting is the command's to write.
    bool setMetric(bool metric);

    double measure(double value) const;
    double unmeasure(double value) const;
    static double toImperial(double value);
    static double toMetric(double value);

    QString getMeasureExtension() const;
    QString getMeasureQuadricExtension() const;

    MeasureSystem(const MeasureSystem&) = delete;
    MeasureSystem& operator=(const MeasureSystem&) = delete;

private:
    MeasureSystem();
    ~MeasureSystem();

    void settingsUpdate(const main::Event* event);
    void readSetting();

    bool m_Metric;
};

} // namespace util
} // namespace qel
