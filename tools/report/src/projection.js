// Where a place lies on the map, in degrees of the equator to the east and upwards (Mercator).

const radians = Math.PI / 180;
const metresPerDegree = 40075016.7 / 360;
/** Beyond this the projection runs away. */
const lastLatitude = 85;

export const isPlace = location =>
    Number.isFinite(location?.Latitude) && Number.isFinite(location?.Longitude) &&
    Math.abs(location.Latitude) <= 90 && Math.abs(location.Longitude) <= 360;

export function upOf(latitude) {
    const within = Math.max(-lastLatitude, Math.min(lastLatitude, latitude));
    return Math.asinh(Math.tan(within * radians)) / radians;
}

export const latitudeOf = up => Math.atan(Math.sinh(up * radians)) / radians;

/** @returns {number} the metres that a degree of the map shows there */
export const metresAt = up => metresPerDegree * Math.cos(latitudeOf(up) * radians);

/** @returns {number} the largest of 1, 2 and 5 with zeros that is at most the value */
export function roundBelow(value) {
    const power = 10 ** Math.floor(Math.log10(value));
    return [5, 2, 1].find(step => step * power <= value) * power;
}

const stepsOfDegrees = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 45];

/** @returns {number[]} round degrees between two, not many */
export function graticule(low, high, most = 7) {
    const step = stepsOfDegrees.find(size => (high - low) / size <= most) ?? 90;
    const lines = [];
    for (let i = Math.ceil(low / step); i * step <= high && lines.length <= most + 1; ++i)
        lines.push(Number((i * step).toFixed(4)));
    return lines;
}

export const degrees = (value, positive, negative) =>
    `${Number(Math.abs(value).toFixed(3))}°${value === 0 ? '' : value > 0 ? positive : negative}`;
