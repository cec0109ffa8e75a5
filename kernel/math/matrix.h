#pragma once

#include "kernel/log/logger.h"
#include "kernel/math/numerictraits.h"
#include "kernel/math/vector.h"
#include "kernel/util/exception.h"

#include <QString>
#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>

namespace qel {
namespace math {

// A dense R by C matrix in OpenGL's memory order: the element in row r,
// column c lies at index R*c + r (4c + r for 4 by 4), so a 4 by 4 matrix goes
// into glMultMatrixd as it stands and keeps its translation at 12, 13, 14.
// Vectors are columns: M * v.
template<class T, int R, int C>
class Matrix
{
    static_assert(R >= 1 && C >= 1, "a matrix has at least one row and one column");

public:
    typedef NumericTraits<T> Traits;

    // All zero.
    Matrix()
    {
        for (int i = 0; i < R * C; ++i)
            values[i] = Traits::Zero;
    }

    // From R*C values in memory order (column by column), e.g. a GL matrix.
    explicit Matrix(const T* columnMajor)
    {
        for (int i = 0; i < R * C; ++i)
            values[i] = columnMajor[i];
    }

    // From values written row by row, as one reads a matrix on paper.
    // Missing values are Zero, surplus ones are ignored.
    static Matrix fromRows(std::initializer_list<T> rowMajor)
    {
        Matrix result;
        int index = 0;
        for (T value : rowMajor) {
            if (index >= R * C)
                break;
            result(index / C, index % C) = value;
            ++index;
        }
        return result;
    }

    static Matrix identity()
    {
        Matrix result;
        for (int i = 0; i < std::min(R, C); ++i)
            result(i, i) = Traits::One;
        return result;
    }

    // The identity with (x, y, z) in the last column.
    static Matrix translation(T x, T y, T z)
    {
        static_assert(R == 4 && C == 4, "translations are 4 by 4");
        Matrix result = identity();
        result(0, 3) = x;
        result(1, 3) = y;
        result(2, 3) = z;
        return result;
    }

    // Uses the first three components.
    template<int N>
    static Matrix translation(const Vector<T, N>& offset)
    {
        return translation(offset[0], offset[1], offset[2]);
    }

    // (x, y, z) on the diagonal, 1 at (3,3).
    static Matrix scaling(T x, T y, T z)
    {
        static_assert(R == 4 && C == 4, "scalings are 4 by 4");
        Matrix result = identity();
        result(0, 0) = x;
        result(1, 1) = y;
        result(2, 2) = z;
        return result;
    }

    static Matrix scaling(T factor) { return scaling(factor, factor, factor); }

    T& operator()(int row, int col) { return values[R * col + row]; }
    const T& operator()(int row, int col) const { return values[R * col + row]; }
    T& operator[](int index) { return values[index]; }
    const T& operator[](int index) const { return values[index]; }
    T* data() { return values; }
    const T* data() const { return values; }

    Vector<T, R> getColumn(int col) const
    {
        Vector<T, R> result;
        for (int r = 0; r < R; ++r)
            result[r] = (*this)(r, col);
        return result;
    }

    void setColumn(int col, const Vector<T, R>& column)
    {
        for (int r = 0; r < R; ++r)
            (*this)(r, col) = column[r];
    }

    Vector<T, C> getRow(int row) const
    {
        Vector<T, C> result;
        for (int c = 0; c < C; ++c)
            result[c] = (*this)(row, c);
        return result;
    }

    void setRow(int row, const Vector<T, C>& rowValues)
    {
        for (int c = 0; c < C; ++c)
            (*this)(row, c) = rowValues[c];
    }

    // The plain product; nothing is snapped.
    template<int K>
    Matrix<T, R, K> operator*(const Matrix<T, C, K>& other) const
    {
        Matrix<T, R, K> result;
        for (int i = 0; i < R; ++i) {
            for (int j = 0; j < K; ++j) {
                T sum = Traits::Zero;
                for (int k = 0; k < C; ++k)
                    sum += (*this)(i, k) * other(k, j);
                result(i, j) = sum;
            }
        }
        return result;
    }

    // Becomes this * other with each element snapped, so that chains of
    // accumulated transforms keep exact zeros.
    Matrix& operator*=(const Matrix<T, C, C>& other)
    {
        *this = *this * other;
        for (int i = 0; i < R * C; ++i)
            values[i] = snap(values[i]);
        return *this;
    }

    Vector<T, R> operator*(const Vector<T, C>& column) const
    {
        Vector<T, R> result;
        for (int i = 0; i < R; ++i) {
            T sum = Traits::Zero;
            for (int k = 0; k < C; ++k)
                sum += (*this)(i, k) * column[k];
            result[i] = sum;
        }
        return result;
    }

    bool operator==(const Matrix& other) const
    {
        for (int i = 0; i < R * C; ++i) {
            if (values[i] != other.values[i])
                return false;
        }
        return true;
    }
    bool operator!=(const Matrix& other) const { return !(*this == other); }

    bool isIdentity() const { return *this == identity(); }

    Matrix<T, C, R> getTranspose() const
    {
        Matrix<T, C, R> result;
        for (int r = 0; r < R; ++r) {
            for (int c = 0; c < C; ++c)
                result(c, r) = (*this)(r, c);
        }
        return result;
    }

    // Gauss-Jordan elimination with full pivoting. The inverse is built in
    // place: each eliminated column is replaced by the unit column, so the
    // copy ends as the inverse with its columns permuted by the pivot
    // choices, which are undone at the end. Throws qel::Exception for a
    // pivot that is exactly zero; there is deliberately no tolerance, so
    // nearly singular matrices still invert.
    Matrix getInverse() const
    {
        Matrix inverse;
        if (!invertInto(inverse))
            throwSingular();
        return inverse;
    }

    // No infinity and no NaN among the elements.
    bool isFinite() const
    {
        for (int i = 0; i < R * C; ++i) {
            if (!std::isfinite(values[i]))
                return false;
        }
        return true;
    }

    // Whether the matrix is finite and getInverse would succeed with a finite result:
    // what a transform must be so that every later product and inverse stays defined.
    bool isInvertible() const
    {
        Matrix inverse;
        return isFinite() && invertInto(inverse) && inverse.isFinite();
    }

    // Logs the title (if any) and one line per row at level 4000.
    void dump(const QString& title = QString()) const
    {
        const std::string function = functionName("dump");
        if (!title.isEmpty())
            qel::log::Logger::log(4000, "kernel/math/matrix", 914, function.c_str(), nullptr, title);
        for (int r = 0; r < R; ++r) {
            QString line = QString("%1 %2 : |\t")
                               .arg(static_cast<qulonglong>(reinterpret_cast<quintptr>(this)), 0, 16)
                               .arg(r);
            for (int c = 0; c < C; ++c)
                line += QString("%1\t").arg((*this)(r, c), 0, 'g');
            line += QLatin1String("|");
            qel::log::Logger::log(4000, "kernel/math/matrix", 923, function.c_str(), nullptr, line);
        }
    }

private:
    // The elimination of getInverse; false at a pivot that is exactly zero.
    bool invertInto(Matrix& inverse) const
    {
        static_assert(R == C, "only square matrices have an inverse");
        if (isIdentity()) {
            inverse = *this;
            return true;
        }

        Matrix a(*this);
        int pivotRows[R];
        int pivotColumns[R];
        bool used[R];
        for (int i = 0; i < R; ++i)
            used[i] = false;

        for (int round = 0; round < R; ++round) {
            int pivotRow = -1;
            int pivotColumn = -1;
            a.findPivot(used, pivotRow, pivotColumn);
            used[pivotColumn] = true;
            if (pivotRow != pivotColumn)
                a.swapRows(pivotRow, pivotColumn);
            pivotRows[round] = pivotRow;
            pivotColumns[round] = pivotColumn;
            if (a(pivotColumn, pivotColumn) == Traits::Zero)
                return false;
            a.eliminate(pivotColumn);
        }
        for (int round = R - 1; round >= 0; --round) {
            if (pivotRows[round] != pivotColumns[round])
                a.swapColumns(pivotRows[round], pivotColumns[round]);
        }
        inverse = a;
        return true;
    }

    static std::string functionName(const char* method)
    {
        return std::string("qel::math::Matrix<") + Traits::name() + "," + std::to_string(R) + ","
            + std::to_string(C) + ">::" + method;
    }

    [[noreturn]] static void throwSingular()
    {
        const std::string function = functionName("getInverse");
        throw qel::Exception(QStringLiteral("Can't build inverse, because it's a singular matrix!"),
                             "kernel/math/matrix", 774, function.c_str());
    }

    // The element of greatest magnitude among the unused rows and columns;
    // ties go to the last one scanned. Only NaNs left: the first candidate.
    void findPivot(const bool* used, int& pivotRow, int& pivotColumn) const
    {
        T biggest = Traits::Zero;
        for (int j = 0; j < R; ++j) {
            if (used[j])
                continue;
            for (int k = 0; k < C; ++k) {
                if (used[k])
                    continue;
                const T magnitude = std::abs((*this)(j, k));
                if (pivotRow < 0 || magnitude >= biggest) {
                    if (magnitude >= biggest)
                        biggest = magnitude;
                    pivotRow = j;
                    pivotColumn = k;
                }
            }
        }
    }

    void eliminate(int pivot)
    {
        const T reciprocal = Traits::One / (*this)(pivot, pivot);
        (*this)(pivot, pivot) = Traits::One;
        for (int c = 0; c < C; ++c)
            (*this)(pivot, c) *= reciprocal;
        for (int r = 0; r < R; ++r) {
            if (r == pivot)
                continue;
            const T factor = (*this)(r, pivot);
            (*this)(r, pivot) = Traits::Zero;
            for (int c = 0; c < C; ++c)
                (*this)(r, c) -= (*this)(pivot, c) * factor;
        }
    }

    void swapRows(int first, int second)
    {
        for (int c = 0; c < C; ++c)
            std::swap((*this)(first, c), (*this)(second, c));
    }

    void swapColumns(int first, int second)
    {
        for (int r = 0; r < R; ++r)
            std::swap((*this)(r, first), (*this)(r, second));
    }

    T values[R * C];
};

} // namespace math
} // namespace qel
