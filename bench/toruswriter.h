#pragma once

#include <QString>
#include <array>

class QByteArray;
class QFile;

// The torus grid: rings x segments quads, two triangles each, every grid point shared by six
// triangles, so a load merges the STL's 3 corners per triangle down to rings x segments.
// As PLY, each grid point is written once.
class TorusWriter
{
public:
    explicit TorusWriter(long long wantedTriangles);

    long long triangles() const { return 2LL * rings * segments; }
    long long gridPoints() const { return static_cast<long long>(rings) * segments; }
    long long fileSize(bool ply) const;

    // Binary STL, every corner written out, or binary PLY, each grid point once.
    bool write(const QString& path, bool ply) const;

private:
    struct Point
    {
        float x, y, z;
    };

    std::array<long long, 6> square(int ring, int segment) const;
    Point pointNumbered(long long number) const;
    Point point(int ring, int segment) const;
    void writeStl(QFile& file) const;
    QByteArray plyHeader() const;
    void writePly(QFile& file) const;
    static void appendFloat(QByteArray& data, float value);
    static void appendTriangle(QByteArray& data, const Point& a, const Point& b, const Point& c);

    int rings;
    int segments;
};
