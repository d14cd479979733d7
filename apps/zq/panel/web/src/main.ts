import { mount } from 'svelte';
import App from './App.svelte';
import './styles/tokens.css';
import './styles/base.css';
import './styles/controls.css';
import { app } from './state/app.svelte.ts';

const target = document.getElementById('panel');
if (target !== null) {
  mount(App, { target });
  void app.start();
}
