#include "qvimanager/cmetry/linalg.h"

#include <cmath>
#include <vector>

namespace CMetry {

void LinAlg::VAddKxV(float* v, float k, const float* w, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] += k * w[i];
    }
}

void LinAlg::InitV(float* v, float k, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] = k;
    }
}

void LinAlg::VAddV(float* out, const float* a, const float* b, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = a[i] + b[i];
    }
}

void LinAlg::VAddV(float* v, const float* a, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] += a[i];
    }
}

void LinAlg::VSubV(float* out, const float* a, const float* b, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = a[i] - b[i];
    }
}

void LinAlg::VSubV(float* v, const float* a, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] -= a[i];
    }
}

float LinAlg::SumV(const float* a, long n)
{
    float sum = 0.0f;
    for (long i = 0; i < n; ++i) {
        sum += a[i];
    }
    return sum;
}

float LinAlg::BetragV(const float* a, long n)
{
    return static_cast<float>(std::sqrt(static_cast<double>(DotProd(a, a, n))));
}

void LinAlg::KxM(float* out, float k, const float* m, long r, long c)
{
    KxV(out, k, m, r * c);
}

void LinAlg::KxM(float* m, float k, long r, long c)
{
    KxV(m, k, r * c);
}

void LinAlg::KxV(float* out, float k, const float* a, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = k * a[i];
    }
}

void LinAlg::KxV(float* v, float k, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] *= k;
    }
}

void LinAlg::KVAddKV(float* out, float k1, const float* a, float k2, const float* b, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = k1 * a[i] + k2 * b[i];
    }
}

void LinAlg::VxV(float* out, const float* a, const float* b, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = a[i] * b[i];
    }
}

void LinAlg::VxV(float* v, const float* a, long n)
{
    for (long i = 0; i < n; ++i) {
        v[i] *= a[i];
    }
}

void LinAlg::VdivV(float* out, const float* a, const float* b, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = a[i] / b[i];
    }
}

void LinAlg::MxV(float* out, const float* m, const float* v, long r, long c, long stride)
{
    for (long i = 0; i < r; ++i) {
        out[i] = DotProd(m + i * stride, v, c);
    }
}

void LinAlg::MtxV(float* out, const float* m, const float* v, long r, long c)
{
    for (long j = 0; j < c; ++j) {
        float sum = 0.0f;
        for (long i = 0; i < r; ++i) {
            sum += m[i * c + j] * v[i];
        }
        out[j] = sum;
    }
}

void LinAlg::CopyVector(float* out, const float* a, long n)
{
    for (long i = 0; i < n; ++i) {
        out[i] = a[i];
    }
}

void LinAlg::CopyMatrix(float* out, const float* a, long r, long c)
{
    CopyVector(out, a, r * c);
}

void LinAlg::MxM(float* out, const float* a, const float* b, long r, long k, long c)
{
    for (long i = 0; i < r; ++i) {
        for (long j = 0; j < c; ++j) {
            float sum = 0.0f;
            for (long l = 0; l < k; ++l) {
                sum += a[i * k + l] * b[l * c + j];
            }
            out[i * c + j] = sum;
        }
    }
}

void LinAlg::TranspM(float* out, const float* m, long r, long c)
{
    for (long i = 0; i < r; ++i) {
        for (long j = 0; j < c; ++j) {
            out[j * r + i] = m[i * c + j];
        }
    }
}

void LinAlg::MaTxMa(const float* a, long r, long c, float* out)
{
    for (long i = 0; i < c; ++i) {
        for (long j = i; j < c; ++j) {
            float sum = 0.0f;
            for (long l = 0; l < r; ++l) {
                sum += a[l * c + i] * a[l * c + j];
            }
            out[i * c + j] = sum;
            out[j * c + i] = sum;
        }
    }
}

void LinAlg::GaussEl(float* b, float* a, float* x, long n, bool& singular, long* rows, long* order)
{
    singular = false;
    for (long i = 0; i < n; ++i) {
        rows[i] = i * n;
        order[i] = i;
    }
    for (long k = 0; k < n; ++k) {
        // Partial pivoting; strict comparison keeps the first of equal rows.
        long pivot = k;
        for (long i = k + 1; i < n; ++i) {
            if (std::fabs(a[rows[pivot] + k]) < std::fabs(a[rows[i] + k])) {
                pivot = i;
            }
        }
        if (a[rows[pivot] + k] == 0.0f) {
            singular = true;
            return;
        }
        const long pivotRow = rows[pivot];
        rows[pivot] = rows[k];
        rows[k] = pivotRow;
        const long pivotOrder = order[pivot];
        order[pivot] = order[k];
        order[k] = pivotOrder;
        for (long i = k + 1; i < n; ++i) {
            const float factor = -a[rows[i] + k] / a[rows[k] + k];
            for (long j = k + 1; j < n; ++j) {
                a[rows[i] + j] += factor * a[rows[k] + j];
            }
            b[order[i]] += factor * b[order[k]];
        }
    }
    for (long i = n - 1; i >= 0; --i) {
        float t = b[order[i]];
        for (long j = i + 1; j < n; ++j) {
            t -= x[j] * a[rows[i] + j];
        }
        x[i] = t / a[rows[i] + i];
    }
}

void LinAlg::GaussEl(float* b, float* a, float* x, long n, bool& singular)
{
    std::vector<long> rows(static_cast<std::size_t>(n > 0 ? n : 0));
    std::vector<long> order(rows.size());
    GaussEl(b, a, x, n, singular, rows.data(), order.data());
}

void LinAlg::LeastSquareFit(const float* w, float* y, float* a, float* x, long m, long n, float* ata, float* atb,
                            long* rows, long* order, bool& ok)
{
    ok = true;
    if (m < n) {
        ok = false;
        return;
    }
    bool singular = false;
    if (m == n) {
        GaussEl(y, a, x, n, singular, rows, order);
    } else {
        for (long i = 0; i < m; ++i) {
            KxV(a + i * n, w[i], n);
        }
        MaTxMa(a, m, n, ata);
        VxV(y, w, m);
        MtxV(atb, a, y, m, n);
        GaussEl(atb, ata, x, n, singular, rows, order);
    }
    if (singular) {
        ok = false;
    }
}

} // namespace CMetry
