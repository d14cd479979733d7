// What this browser remembers between visits. A web view without storage remembers nothing and works.

const prefix = 'zq-panel.';

export function read(key: string): string {
  try {
    return localStorage.getItem(prefix + key) ?? '';
  } catch {
    return '';
  }
}

export function write(key: string, value: string): void {
  try {
    localStorage.setItem(prefix + key, value);
  } catch {
    // Remembering is a convenience.
  }
}
