// Bytes and waits in words of the page's language, from what the browser knows of it.

const units = ['byte', 'kilobyte', 'megabyte', 'gigabyte', 'terabyte'] as const;

export function bytesText(bytes: number, language: string): string {
  let value = Number.isFinite(bytes) ? Math.max(0, bytes) : 0;
  let unit = 0;
  while (value >= 1000 && unit < units.length - 1) {
    value /= 1000;
    unit++;
  }
  return new Intl.NumberFormat(language, {
    style: 'unit',
    unit: units[unit] ?? 'byte',
    unitDisplay: unit === 0 ? 'long' : 'short',
    maximumFractionDigits: unit === 0 || value >= 100 ? 0 : 1,
  }).format(value);
}

// Coarser the longer it takes: nobody waits by the second for an hour.
export function waitText(seconds: number, language: string): string {
  const part = (value: number, unit: 'second' | 'minute' | 'hour'): string =>
    new Intl.NumberFormat(language, { style: 'unit', unit, unitDisplay: 'short' }).format(value);
  const whole = Math.max(0, Math.ceil(seconds));
  if (whole < 60) {
    return part(whole, 'second');
  }
  const minutes = Math.ceil(whole / 60);
  if (minutes < 60) {
    return part(minutes, 'minute');
  }
  const rest = minutes % 60;
  return rest === 0 ? part(minutes / 60, 'hour') : `${part(Math.floor(minutes / 60), 'hour')} ${part(rest, 'minute')}`;
}
