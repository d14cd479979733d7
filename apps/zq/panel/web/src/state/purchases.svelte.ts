// The purchases of this run, by repository, the latest first.
import * as api from '../api/client.ts';
import type { Purchase } from '../api/types.ts';
import { attempt } from './failure.ts';

class PurchasesState {
  all = $state.raw<Record<string, Purchase[]>>({});

  of(repository: string): Purchase[] {
    return this.all[repository] ?? [];
  }

  async load(repository: string): Promise<void> {
    const answer = await attempt(() => api.getPurchases(repository));
    if (answer !== undefined) {
      this.all = { ...this.all, [repository]: answer.purchases };
    }
  }

  take(repository: string, purchase: Purchase): void {
    const list = this.of(repository);
    const known = list.some((other) => other.key === purchase.key);
    const next = known
      ? list.map((other) => (other.key === purchase.key ? purchase : other))
      : [purchase, ...list];
    this.all = { ...this.all, [repository]: next };
  }
}

export const purchases = new PurchasesState();
